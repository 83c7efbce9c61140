#include "Download.h"

#include <curl/curl.h>

namespace {

std::size_t Append(char* data, std::size_t size, std::size_t count, void* target) {
  static_cast<std::string*>(target)->append(data, size * count);
  return size * count;
}

// libcurl's global state, set up once for the process.
struct CurlGlobal {
  CurlGlobal() { curl_global_init(CURL_GLOBAL_DEFAULT); }
  ~CurlGlobal() { curl_global_cleanup(); }
};

}  // namespace

std::string DownloadText(const std::string& url, std::string& error) {
  static CurlGlobal global;
  error.clear();
  CURL* curl = curl_easy_init();
  if (!curl) {
    error = "the download library could not start.";
    return {};
  }
  std::string body;
  char message[CURL_ERROR_SIZE] = {0};
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, Append);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, message);
  curl_easy_setopt(curl, CURLOPT_FAILONERROR, 1L);  // an HTTP error status is a failure
  curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, 15L);
  curl_easy_setopt(curl, CURLOPT_TIMEOUT, 600L);
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  const CURLcode result = curl_easy_perform(curl);
  curl_easy_cleanup(curl);
  if (result != CURLE_OK) {
    error = message[0] ? message : curl_easy_strerror(result);
    return {};
  }
  return body;
}
