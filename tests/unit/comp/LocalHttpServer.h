// A small HTTP server on 127.0.0.1 for download tests: a file, a missing file, and servers that
// misbehave (stall, flood, redirect for ever).
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// Serves, each connection on its own thread until the server is destroyed:
//   /prices.csv    a small delimited file
//   /stall         reads the request and never answers
//   /stall-body    answers a length of 1000 bytes, sends 10 and stalls
//   /flood         a body without a length that never ends
//   /huge          announces 10^12 bytes and floods
//   /trickle       a body without a length, a line every 10 ms for ever
//   /loop          redirects to itself
// and 404 for anything else.
class LocalHttpServer {
public:
  static constexpr const char* kPrices = "item,price\r\n\"bread, white\",1.5\r\nmilk,0.9\r\n";

  LocalHttpServer() {
    m_socket = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;  // any free port
    bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
    listen(m_socket, 16);
    socklen_t length = sizeof address;
    getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &length);
    m_port = ntohs(address.sin_port);
    m_thread = std::thread([this] { Accept(); });
  }
  ~LocalHttpServer() {
    m_stop = true;
    shutdown(m_socket, SHUT_RDWR);
    close(m_socket);
    m_thread.join();
    std::lock_guard<std::mutex> lock(m_mutex);
    for (std::thread& t : m_clients) t.join();
  }
  LocalHttpServer(const LocalHttpServer&) = delete;
  LocalHttpServer& operator=(const LocalHttpServer&) = delete;

  int Port() const { return m_port; }
  std::string Host() const { return "127.0.0.1:" + std::to_string(m_port); }
  // How many requests have arrived.
  int Requests() const { return m_requests; }

private:
  void Accept() {
    while (!m_stop) {
      const int client = accept(m_socket, nullptr, nullptr);
      if (client < 0) return;
      std::lock_guard<std::mutex> lock(m_mutex);
      m_clients.emplace_back([this, client] {
        Serve(client);
        close(client);
      });
    }
  }

  // Waits until the server stops or the client goes away.
  void Hold(int client) const {
    while (!m_stop) {
      pollfd watch{client, POLLIN, 0};
      if (poll(&watch, 1, 50) > 0) {
        char byte = 0;
        if (recv(client, &byte, 1, 0) <= 0) return;
      }
    }
  }

  bool Send(int client, const std::string& text) const {
    return send(client, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size());
  }

  // Sends the same block until the client goes away or the server stops.
  void Flood(int client) const {
    const std::string block(64 * 1024, '1');
    while (!m_stop && Send(client, block)) {
    }
  }

  void Serve(int client) {
    std::string request;
    char buffer[4096];
    while (request.find("\r\n\r\n") == std::string::npos) {
      const ssize_t got = recv(client, buffer, sizeof buffer, 0);
      if (got <= 0) return;
      request.append(buffer, static_cast<std::size_t>(got));
    }
    ++m_requests;
    const std::string path = request.substr(4, request.find(' ', 4) - 4);
    const std::string ok = "HTTP/1.1 200 OK\r\nConnection: close\r\n";
    if (path == "/prices.csv") {
      const std::string body = kPrices;
      Send(client, ok + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    } else if (path == "/stall") {
      Hold(client);
    } else if (path == "/stall-body") {
      if (Send(client, ok + "Content-Length: 1000\r\n\r\nx,y\n1,2\n3,")) Hold(client);
    } else if (path == "/flood") {
      if (Send(client, ok + "\r\nx\n")) Flood(client);
    } else if (path == "/huge") {
      if (Send(client, ok + "Content-Length: 1000000000000\r\n\r\nx\n")) Flood(client);
    } else if (path == "/trickle") {
      if (Send(client, ok + "\r\nx\n")) {
        while (!m_stop && Send(client, "1\n")) std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
    } else if (path == "/loop") {
      Send(client, "HTTP/1.1 302 Found\r\nLocation: /loop\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    } else {
      Send(client, "HTTP/1.1 404 Not Found\r\nContent-Length: 2\r\nConnection: close\r\n\r\nno");
    }
  }

  int m_socket = -1;
  int m_port = 0;
  std::atomic<bool> m_stop{false};
  std::atomic<int> m_requests{0};
  std::mutex m_mutex;
  std::vector<std::thread> m_clients;
  std::thread m_thread;
};
