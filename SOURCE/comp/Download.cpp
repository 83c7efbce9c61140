// Downloading with libcurl: one easy handle driven by a multi handle, so that the limits and the
// interrupt are checked every tenth of a second whatever the server does.
#include "Download.h"

#include <curl/curl.h>

#include <charconv>
#include <memory>

namespace {

using Clock = std::chrono::steady_clock;

// libcurl's global state, set up once for the process.
struct CurlGlobal {
  CurlGlobal() { curl_global_init(CURL_GLOBAL_DEFAULT); }
  ~CurlGlobal() { curl_global_cleanup(); }
};

struct EasyDeleter {
  void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
};
struct MultiDeleter {
  void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

// What the callbacks share with the loop: the body so far and why the transfer should stop.
struct Transfer {
  const DownloadLimits& limits;
  std::string body;
  Clock::time_point lastData = Clock::now();
  DownloadOutcome stop = DownloadOutcome::Done;  // Done while nothing asks to stop

  explicit Transfer(const DownloadLimits& l) : limits(l) {}

  // Sets `stop` when the user asked to stop or no bytes came for too long; true when stopping.
  bool ShouldStop() {
    if (stop != DownloadOutcome::Done) return true;
    if (limits.interrupted && limits.interrupted()) {
      stop = DownloadOutcome::Interrupted;
    } else if (Clock::now() - lastData > limits.stallTimeout) {
      stop = DownloadOutcome::Stalled;
    }
    return stop != DownloadOutcome::Done;
  }
};

std::size_t WriteBody(char* data, std::size_t size, std::size_t count, void* target) {
  auto& transfer = *static_cast<Transfer*>(target);
  const std::size_t bytes = size * count;
  transfer.lastData = Clock::now();
  // A body longer than the limit (one without an announced length, or a longer one than announced)
  // ends here: returning fewer bytes than given makes libcurl stop with a write error.
  if (bytes > transfer.limits.maxBytes - transfer.body.size()) {
    transfer.stop = DownloadOutcome::TooLarge;
    return 0;
  }
  try {
    transfer.body.append(data, bytes);
  } catch (...) {
    transfer.stop = DownloadOutcome::TooLarge;
    return 0;
  }
  return bytes;
}

std::size_t CountHeader(char*, std::size_t size, std::size_t count, void* target) {
  static_cast<Transfer*>(target)->lastData = Clock::now();
  return size * count;
}

// Called by libcurl as the transfer goes on; non-zero aborts it.
int Progress(void* target, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<Transfer*>(target)->ShouldStop() ? 1 : 0;
}

std::string Seconds(std::chrono::milliseconds time) {
  char text[32];
  const auto [end, error] = std::to_chars(text, text + sizeof text, static_cast<double>(time.count()) / 1000.0);
  return error == std::errc() ? std::string(text, end) : std::to_string(time.count() / 1000);
}

// The failure of an outcome other than Done and Failed.
std::string LimitMessage(DownloadOutcome outcome, const DownloadLimits& limits) {
  switch (outcome) {
    case DownloadOutcome::TooLarge:
      return "the file is larger than the limit of " + std::to_string(limits.maxBytes) + " bytes.";
    case DownloadOutcome::Stalled:
      return "no data arrived for " + Seconds(limits.stallTimeout) + " seconds.";
    case DownloadOutcome::Interrupted:
      return "the download was interrupted.";
    default:
      return {};
  }
}

}  // namespace

DownloadResult DownloadText(const std::string& url, const DownloadLimits& limits) {
  static CurlGlobal global;
  DownloadResult result;
  const std::unique_ptr<CURL, EasyDeleter> curl(curl_easy_init());
  const std::unique_ptr<CURLM, MultiDeleter> multi(curl_multi_init());
  if (!curl || !multi) {
    result.error = "the download library could not start.";
    return result;
  }
  Transfer transfer(limits);
  char message[CURL_ERROR_SIZE] = {0};
  CURL* easy = curl.get();
  curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
#if LIBCURL_VERSION_NUM >= 0x075500
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
#else
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS, static_cast<long>(CURLPROTO_HTTP | CURLPROTO_HTTPS));
  curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS, static_cast<long>(CURLPROTO_HTTP | CURLPROTO_HTTPS));
#endif
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, WriteBody);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &transfer);
  curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, CountHeader);
  curl_easy_setopt(easy, CURLOPT_HEADERDATA, &transfer);
  curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, Progress);
  curl_easy_setopt(easy, CURLOPT_XFERINFODATA, &transfer);
  curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, message);
  curl_easy_setopt(easy, CURLOPT_FAILONERROR, 1L);  // an HTTP error status is a failure
  curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(easy, CURLOPT_MAXREDIRS, limits.maxRedirects);
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits.connectTimeout.count()));
  // An announced length above the limit fails before the body comes.
  curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(limits.maxBytes));
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_multi_add_handle(multi.get(), easy);

  // Drives the transfer, waking at least every 100 ms to look at the interrupt and the stall
  // clock even when the server sends nothing.
  int running = 1;
  CURLMcode multiError = CURLM_OK;
  while (running > 0) {
    multiError = curl_multi_perform(multi.get(), &running);
    if (multiError != CURLM_OK || running == 0 || transfer.ShouldStop()) break;
    multiError = curl_multi_poll(multi.get(), nullptr, 0, 100, nullptr);
    if (multiError != CURLM_OK) break;
  }
  CURLcode code = CURLE_OK;
  bool finished = false;
  int queued = 0;
  while (CURLMsg* done = curl_multi_info_read(multi.get(), &queued)) {
    if (done->msg == CURLMSG_DONE && done->easy_handle == easy) {
      code = done->data.result;
      finished = true;
    }
  }
  curl_multi_remove_handle(multi.get(), easy);

  if (transfer.stop != DownloadOutcome::Done) {
    result.outcome = transfer.stop;
    result.error = LimitMessage(transfer.stop, limits);
  } else if (multiError != CURLM_OK) {
    result.error = curl_multi_strerror(multiError);
  } else if (!finished) {
    result.error = "the transfer ended without an answer.";
  } else if (code == CURLE_FILESIZE_EXCEEDED) {
    result.outcome = DownloadOutcome::TooLarge;
    result.error = LimitMessage(DownloadOutcome::TooLarge, limits);
  } else if (code == CURLE_OPERATION_TIMEDOUT) {
    // The only time limit given to libcurl is the connection's.
    result.error = "no connection within " + Seconds(limits.connectTimeout) + " seconds.";
  } else if (code == CURLE_TOO_MANY_REDIRECTS) {
    result.error = "it was redirected more than " + std::to_string(limits.maxRedirects) + " times.";
  } else if (code != CURLE_OK) {
    result.error = message[0] ? message : curl_easy_strerror(code);
  } else {
    result.outcome = DownloadOutcome::Done;
    result.body = std::move(transfer.body);
  }
  return result;
}
