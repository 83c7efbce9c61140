// Downloading a file over http or https into memory, within limits of time and size.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

// Bounds on one download; the defaults suit a data file over a slow connection.
struct DownloadLimits {
  // How long to wait for each connection (name look-up and handshake included).
  std::chrono::milliseconds connectTimeout{15000};
  // The longest wait for the next bytes (headers or body), counted from the start and from each
  // arrival.
  std::chrono::milliseconds stallTimeout{30000};
  // Redirects followed before giving up.
  long maxRedirects = 10;
  // The largest body accepted, in bytes.
  std::size_t maxBytes = 100'000'000;
  // Polled throughout the transfer (at least every tenth of a second); true ends it at once.
  std::function<bool()> interrupted;
};

// How a download ended.
enum class DownloadOutcome { Done, Failed, TooLarge, Stalled, Interrupted };

struct DownloadResult {
  DownloadOutcome outcome = DownloadOutcome::Failed;
  std::string body;   // the document when Done
  std::string error;  // why it ended otherwise (no connection, an HTTP error status, a limit)
};

// Fetches the document at `url` (http:// or https:// only, redirects followed to http and https
// only). Never waits longer than the limits allow, never holds more than `maxBytes` of body.
DownloadResult DownloadText(const std::string& url, const DownloadLimits& limits = {});
