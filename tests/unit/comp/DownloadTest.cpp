// Downloads against a local server that answers, stalls, floods and redirects for ever: every
// transfer ends within its limits, with the outcome that says why.
#include <gtest/gtest.h>

#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "Download.h"
#include "comp/LocalHttpServer.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Short limits, so that each misbehaving server costs a fraction of a second.
DownloadLimits Short() {
  DownloadLimits limits;
  limits.connectTimeout = milliseconds(500);
  limits.stallTimeout = milliseconds(300);
  limits.maxRedirects = 3;
  limits.maxBytes = 100'000;
  return limits;
}

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

}  // namespace

TEST(Download, ReadsAFileUpToItsLimit) {
  LocalHttpServer server;
  const std::string url = "http://" + server.Host() + "/prices.csv";
  const std::string prices = LocalHttpServer::kPrices;
  DownloadLimits limits = Short();
  limits.maxBytes = prices.size();  // exactly the file
  DownloadResult r = DownloadText(url, limits);
  EXPECT_EQ(r.outcome, DownloadOutcome::Done) << r.error;
  EXPECT_EQ(r.body, prices);
  limits.maxBytes = prices.size() - 1;
  r = DownloadText(url, limits);
  EXPECT_EQ(r.outcome, DownloadOutcome::TooLarge);
  EXPECT_EQ(r.body, "");

  r = DownloadText("http://" + server.Host() + "/missing.csv", Short());
  EXPECT_EQ(r.outcome, DownloadOutcome::Failed);
  EXPECT_NE(r.error.find("404"), std::string::npos) << r.error;
  // Only http and https.
  r = DownloadText("file:///etc/hostname", Short());
  EXPECT_EQ(r.outcome, DownloadOutcome::Failed);
  EXPECT_EQ(r.body, "");
}

// A server that accepts and never answers, and one that stops in the middle of the body, end
// with Stalled after the stall limit rather than never.
TEST(Download, StalledServersTimeOut) {
  LocalHttpServer server;
  for (const char* path : {"/stall", "/stall-body"}) {
    const Clock::time_point start = Clock::now();
    const DownloadResult r = DownloadText("http://" + server.Host() + path, Short());
    const double elapsed = SecondsSince(start);
    EXPECT_EQ(r.outcome, DownloadOutcome::Stalled) << path << ": " << r.error;
    EXPECT_EQ(r.error, "no data arrived for 0.3 seconds.");
    EXPECT_GE(elapsed, 0.25) << path;
    EXPECT_LT(elapsed, 5.0) << path;
  }
}

// A port whose queue of pending connections is full drops new ones: the connect limit ends the
// wait.
TEST(Download, ConnectionsTimeOut) {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener, 0), 0);
  socklen_t length = sizeof address;
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  // Fill the queue (never accepted).
  std::vector<int> pending;
  for (int i = 0; i < 4; ++i) {
    const int s = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    connect(s, reinterpret_cast<sockaddr*>(&address), sizeof address);
    pending.push_back(s);
  }
  DownloadLimits limits = Short();
  limits.stallTimeout = milliseconds(20000);  // only the connect limit can end it
  const Clock::time_point start = Clock::now();
  const DownloadResult r =
      DownloadText("http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/x.csv", limits);
  const double elapsed = SecondsSince(start);
  EXPECT_EQ(r.outcome, DownloadOutcome::Failed);
  EXPECT_EQ(r.error, "no connection within 0.5 seconds.");
  EXPECT_GE(elapsed, 0.45);
  EXPECT_LT(elapsed, 5.0);
  for (int s : pending) close(s);
  close(listener);
}

// Endless bodies stop at the size limit, whether their length is announced or not; a redirect
// loop stops at the redirect limit.
TEST(Download, FloodsAndRedirectLoopsStopAtTheirLimits) {
  LocalHttpServer server;
  for (const char* path : {"/flood", "/huge"}) {
    const DownloadResult r = DownloadText("http://" + server.Host() + path, Short());
    EXPECT_EQ(r.outcome, DownloadOutcome::TooLarge) << path << ": " << r.error;
    EXPECT_EQ(r.error, "the file is larger than the limit of 100000 bytes.");
    EXPECT_EQ(r.body, "");
  }
  const int before = server.Requests();
  const DownloadResult r = DownloadText("http://" + server.Host() + "/loop", Short());
  EXPECT_EQ(r.outcome, DownloadOutcome::Failed);
  EXPECT_EQ(r.error, "it was redirected more than 3 times.");
  EXPECT_EQ(server.Requests() - before, 4);  // the first request and three redirects
}

// The interrupt ends a transfer that would otherwise wait for its long stall limit, and one that
// goes on for ever.
TEST(Download, InterruptEndsTheTransfer) {
  LocalHttpServer server;
  for (const char* path : {"/stall", "/trickle"}) {
    std::atomic<bool> stop{false};
    DownloadLimits limits;
    limits.stallTimeout = milliseconds(20000);
    limits.interrupted = [&stop] { return stop.load(); };
    std::thread stopper([&stop] {
      std::this_thread::sleep_for(milliseconds(200));
      stop = true;
    });
    const Clock::time_point start = Clock::now();
    const DownloadResult r = DownloadText("http://" + server.Host() + path, limits);
    const double elapsed = SecondsSince(start);
    stopper.join();
    EXPECT_EQ(r.outcome, DownloadOutcome::Interrupted) << path << ": " << r.error;
    EXPECT_EQ(r.error, "the download was interrupted.");
    EXPECT_LT(elapsed, 3.0) << path;
  }
}
