// Helpers for interpreter tests: a session that records its output, and running code on it.
#pragma once

#include <memory>
#include <string>

#include "Interpreter.h"
#include "RecordingSink.h"
#include "Session.h"
#include "TavixError.h"

struct RecordingSession {
  std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
  Session session;
  RecordingSession() { session.dispatcher = EventDispatcher(sink); }

  // The report a program throws, or "" when it runs through.
  std::string ErrorOf(const std::string& code, long lineOffset = 0,
                      const std::string& name = "\"test.tvx\"") {
    try {
      RunProgram(session, code, name, lineOffset);
    } catch (const TavixError& error) {
      return error.what();
    }
    return "";
  }
};
