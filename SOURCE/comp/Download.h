// Downloading a file over http or https into memory.
#pragma once

#include <string>

// The body of the document at `url` (http:// or https://, redirects followed). On failure the
// result is empty and `error` says why (no connection, an HTTP error status, a timeout).
std::string DownloadText(const std::string& url, std::string& error);
