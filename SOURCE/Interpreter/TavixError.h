// The one exception type for errors a user can cause: it carries the finished report text.
#pragma once

#include <stdexcept>
#include <string>

// Thrown by the interpreter with the complete report; nothing in the core catches it, the front
// end that started the run prints what() through EventDispatcher::PrintError.
class TavixError : public std::runtime_error {
public:
  explicit TavixError(const std::string& report) : std::runtime_error(report) {}
};

// Thrown when the user interrupts a running job; front ends treat it as a quiet stop.
class TavixInterrupted : public std::exception {
public:
  const char* what() const noexcept override { return "interrupted"; }
};
