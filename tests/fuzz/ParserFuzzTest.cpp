// Random and mutated scripts run through the whole interpreter for a bounded time: every run
// must end with a report or without one, never with a crash, a hang or another exception.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <random>
#include <string>
#include <vector>

#include "Interpreter.h"
#include "RecordingSink.h"
#include "TavixError.h"

namespace {

const std::vector<std::string> kCorpus = {
    "a = [1 2; 3 4];\nb = a' * a + 1;\nprint(b(1:2, :));\n",
    "s.x.y = [1, -2 3];\nprint(s.x.y .^ 2);\nt = s;\nt.x.y(2) = 5;\n",
    "x = (1 + 2) * 3 ^ -1 ./ [4 5];\n// comment\n/* block */ print(\"a\\tb\\n\");\n",
    "v = [1 2 3 4];\nv(2:3) = [9 9];\nw = v(4) - inf + nan * pi;\nprint(w, [0 0.5 1]);\n",
    "A = [1 2; 3 4] ^ 3;\nB = [A, A; A A];\nB(:, 1) = 0;\nprint(B);\n",
    "s = 0;\nfor (i = 1 : 5)\n  if (i > 2 & ~(s == 1) | strcmp(\"a\", \"a\"))\n    s = s + i;\n"
    "  else\n    s = s - 1;\n  end\nend\nwhile (s > 0)\n  s = s - 4;\nend\n",
    "function [a, b] = f(x, y)\n  a = x + y;\n  b = x * y;\nend\n"
    "function g(s)\n  print(s);\nend\n@g(\"t\");\n[p, q] = @f(1, 1);\n",
};

// Pieces that keep the mutated scripts close to the language.
const std::vector<std::string> kPieces = {
    "(", ")", "[", "]", ";", ",", ":", "'", "=", "+", "-", "*", "/", ".*", "./", ".^", "^", ".",
    "x", "s.a", "1", "2.5e3", ".5", "inf", "nan", "pi", "print", "\"str\"", "\n", " ", "//c\n",
    "/*", "*/", "@f", "end", "if", "{", "}", "~=", "==", "&", "|", "$", "#", "\\", "\"",
    "while (", "for (i = 1 : 3)", "else", "true", "~", "<", ">=", "strcmp(",
};

std::string Mutate(std::string text, std::mt19937_64& rng) {
  std::uniform_int_distribution<int> edits(1, 6);
  const int n = edits(rng);
  for (int i = 0; i < n; ++i) {
    const std::size_t at = text.empty() ? 0 : rng() % (text.size() + 1);
    switch (rng() % 4) {
      case 0:  // delete a few characters
        text.erase(std::min(at, text.size()), rng() % 4);
        break;
      case 1:  // insert a language piece
        text.insert(std::min(at, text.size()), kPieces[rng() % kPieces.size()]);
        break;
      case 2:  // insert a random byte
        text.insert(std::min(at, text.size()), 1, static_cast<char>(rng() % 256));
        break;
      default:  // duplicate a stretch
        if (!text.empty()) {
          const std::size_t from = rng() % text.size();
          text.insert(std::min(at, text.size()), text.substr(from, rng() % 20));
        }
        break;
    }
  }
  return text;
}

std::string RandomPieces(std::mt19937_64& rng) {
  std::string text;
  const int n = static_cast<int>(rng() % 40);
  for (int i = 0; i < n; ++i) text += kPieces[rng() % kPieces.size()];
  return text;
}

}  // namespace

TEST(ParserFuzz, RandomAndMutatedScriptsNeverCrash) {
  std::mt19937_64 rng(20261122);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(4);
  int runs = 0;
  int reports = 0;
  while (std::chrono::steady_clock::now() < deadline) {
    const std::string script = (rng() % 3 == 0) ? RandomPieces(rng)
                                                : Mutate(kCorpus[rng() % kCorpus.size()], rng);
    const auto started = std::chrono::steady_clock::now();
    Session session;
    auto sink = std::make_shared<RecordingSink>();
    session.dispatcher = EventDispatcher(sink);
    // Mutations can make endless loops: a watchdog stops a run after a while, as a user would.
    std::atomic<bool> done{false};
    std::thread watchdog([&] {
      for (int waited = 0; waited < 500 && !done; ++waited) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
      session.interruptRequested = true;
    });
    try {
      RunProgram(session, script, "\"fuzz\"", 0);
    } catch (const TavixInterrupted&) {
      // stopped by the watchdog
    } catch (const TavixError& error) {
      ++reports;
      const std::string report = error.what();
      // Every report names the input.
      EXPECT_NE(report.find("input \"fuzz\""), std::string::npos) << script << "\n" << report;
    } catch (const std::exception& error) {
      done = true;
      watchdog.join();
      FAIL() << "unexpected " << error.what() << " from:\n" << script;
    }
    done = true;
    watchdog.join();
    ASSERT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(2)) << script;
    ++runs;
  }
  // Both outcomes occur, and the corpus itself still runs cleanly.
  EXPECT_GT(runs, 100);
  EXPECT_GT(reports, 0);
  EXPECT_LT(reports, runs);
  for (const std::string& script : kCorpus) {
    Session session;
    EXPECT_NO_THROW(RunProgram(session, script, "\"corpus\"", 0)) << script;
  }
}
