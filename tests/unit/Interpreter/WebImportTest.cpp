// webimport against an HTTP server on 127.0.0.1 that the test runs: a file, a missing file, a
// closed port, and a malformed address.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>

#include "Dataset.h"
#include "InterpreterTestSupport.h"

namespace {

// Serves "/prices.csv" and answers 404 to anything else, one connection at a time, until
// destroyed.
class LocalHttpServer {
public:
  LocalHttpServer() {
    m_socket = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;  // any free port
    bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
    listen(m_socket, 4);
    socklen_t length = sizeof address;
    getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &length);
    m_port = ntohs(address.sin_port);
    m_thread = std::thread([this] { Serve(); });
  }
  ~LocalHttpServer() {
    m_stop = true;
    shutdown(m_socket, SHUT_RDWR);
    close(m_socket);
    m_thread.join();
  }
  int Port() const { return m_port; }

private:
  void Serve() {
    while (!m_stop) {
      const int client = accept(m_socket, nullptr, nullptr);
      if (client < 0) return;
      char buffer[4096];
      const ssize_t got = recv(client, buffer, sizeof buffer - 1, 0);
      const std::string request(buffer, got > 0 ? static_cast<std::size_t>(got) : 0);
      const bool found = request.rfind("GET /prices.csv ", 0) == 0;
      const std::string body = found ? "item,price\r\n\"bread, white\",1.5\r\nmilk,0.9\r\n" : "no";
      const std::string reply = std::string(found ? "HTTP/1.1 200 OK" : "HTTP/1.1 404 Not Found") +
                                "\r\nContent-Length: " + std::to_string(body.size()) +
                                "\r\nConnection: close\r\n\r\n" + body;
      send(client, reply.data(), reply.size(), MSG_NOSIGNAL);
      close(client);
    }
  }

  int m_socket = -1;
  int m_port = 0;
  std::atomic<bool> m_stop{false};
  std::thread m_thread;
};

}  // namespace

TEST(WebImport, ReadsAFileFromAServer) {
  LocalHttpServer server;
  RecordingSession run;
  const std::string host = "127.0.0.1:" + std::to_string(server.Port());
  ASSERT_EQ(run.ErrorOf("d = webimport(\"" + host + "/prices.csv\", \",\");"), "");
  const Dataset& d = *run.session.workspace.datasets.at("d");
  EXPECT_EQ(d.StringValue("item", 0), "bread, white");
  EXPECT_EQ(d.GetVariable("price"), Eigen::Vector2d(1.5, 0.9));
  EXPECT_EQ(run.ErrorOf("e = webimport(\"http://" + host + "/prices.csv\", \",\");"), "");
}

TEST(WebImport, FailuresAreMessages) {
  RecordingSession run;
  int closedPort = 0;
  {
    LocalHttpServer server;
    const std::string host = "127.0.0.1:" + std::to_string(server.Port());
    const std::string missing = run.ErrorOf("d = webimport(\"" + host + "/other.csv\", \",\");");
    EXPECT_NE(missing.find("Cannot import data from \"http://" + host + "/other.csv\": "),
              std::string::npos)
        << missing;
    EXPECT_NE(missing.find("404"), std::string::npos) << missing;
    closedPort = server.Port();
  }
  const std::string refused = run.ErrorOf("d = webimport(\"127.0.0.1:" + std::to_string(closedPort) +
                                          "/prices.csv\", \",\");");
  EXPECT_NE(refused.find("Cannot import data from"), std::string::npos) << refused;
  EXPECT_NE(run.ErrorOf("d = webimport(\"ftp://host/file\", \",\");")
                .find("The URL provided to \"webimport\" must be of the form \"host/file\"."),
            std::string::npos);
  EXPECT_NE(run.ErrorOf("d = webimport(\"justahost\", \",\");").find("\"host/file\""),
            std::string::npos);
  EXPECT_EQ(run.session.workspace.ID_code("d"), -1);
}
