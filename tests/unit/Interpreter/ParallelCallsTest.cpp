// mthread: calls on worker threads see only their arguments, leave the caller's values alone,
// stop one another on an error, and all end when the job is stopped.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>

#include "InterpreterTestSupport.h"
#include "TavixStructure.h"

namespace {

const char* kLoopForever = R"(
function y = spin(i)
  y = i;
  while (1 == 1)
    y = y + 1;
  end
end
)";

}  // namespace

TEST(ParallelCalls, CallsSeeOnlyTheirArgumentsAndLeaveTheCallerAlone) {
  RecordingSession s;
  // A call writes into its input; the caller's structure member it came from keeps its value.
  ASSERT_EQ(s.ErrorOf(R"(
function y = bump(v)
  v(1) = 100;
  hidden = 5;
  y = v;
end
args.a = [1 2];
args.b = [3 4];
out = mthread(@bump, args, "threads" = 2);
)"),
            "");
  auto& ws = s.session.workspace;
  EXPECT_EQ(*ws.structures.at("args")->GetpMatrix("a"), (Eigen::MatrixXd(1, 2) << 1, 2).finished());
  // Rows of one length: stacked in member name order.
  EXPECT_EQ(*ws.matrices.at("out"), (Eigen::MatrixXd(2, 2) << 100, 2, 100, 4).finished());
  EXPECT_EQ(ws.matrices.count("hidden"), 0u);

  // The caller's names are not visible inside a call.
  const std::string report = s.ErrorOf("secret = 1;\nfunction y = peek(i)\n  y = secret;\nend\nr = mthread(@peek, [1; 2]);",
                                       0, "\"peek.tvx\"");
  EXPECT_EQ(report,
            "In input \"peek.tvx\", line 5\nr = mthread(@peek, [1; 2]) ...\nCall 1 of function \"peek\" failed:\n"
            "In input \"peek.tvx\", line 3\ny = secret ...\nSymbol \"secret\" is not defined.");
  EXPECT_EQ(s.session.workspace.matrices.count("r"), 0u);
}

TEST(ParallelCalls, FunctionsCalledInsideCallsAndRecursionRunOnEachThread) {
  RecordingSession s;
  ASSERT_EQ(s.ErrorOf(R"(
function f = fact(n)
  f = 1;
  if (n > 1)
    f = n * @fact(n - 1);
  end
end
function r = pair(n)
  r = [@fact(n), @fact(n + 1)];
end
out = mthread(@pair, [1; 2; 3; 4; 5; 6], "threads" = 3);
)"),
            "");
  Eigen::MatrixXd expected(6, 2);
  expected << 1, 2, 2, 6, 6, 24, 24, 120, 120, 720, 720, 5040;
  EXPECT_EQ(*s.session.workspace.matrices.at("out"), expected);
}

TEST(ParallelCalls, TheFirstFailingCallInCallOrderIsReportedAndStopsTheCallsAfterIt) {
  // Call 1 fails only after call 2 has failed; calls 3 and 4 never end unless stopped.
  RecordingSession s;
  const std::string report = s.ErrorOf(R"(
function y = late(i)
  y = i;
  if (i == 1)
    pause(0.2);
    y = first_failure;
  end
  if (i == 2)
    y = second_failure;
  end
  while (1 == 1)
    y = y + 1;
  end
end
r = mthread(@late, [1; 2; 3; 4], "threads" = 4);
)");
  EXPECT_NE(report.find("Call 1 of function \"late\" failed:\n"), std::string::npos) << report;
  EXPECT_NE(report.find("Symbol \"first_failure\" is not defined."), std::string::npos) << report;
}

TEST(ParallelCalls, StoppingTheJobEndsEveryCall) {
  RecordingSession s;
  ASSERT_EQ(s.ErrorOf(kLoopForever), "");
  // Every call loops until it is stopped.
  auto run = std::async(std::launch::async, [&] {
    try {
      RunProgram(s.session, "r = mthread(@spin, [2; 3; 4; 5], \"threads\" = 4);", "\"t\"", 0);
    } catch (const TavixInterrupted&) {
      return true;
    }
    return false;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  s.session.interruptRequested = true;
  ASSERT_EQ(run.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  EXPECT_TRUE(run.get());
  EXPECT_EQ(s.session.workspace.matrices.count("r"), 0u);
}

TEST(ParallelCalls, PrintingIsShownInCallOrderWhateverFinishesFirst) {
  // Later calls end first; the console shows what one call after another would have shown.
  const char* function = R"(
function report(i)
  pause(0.02 * (5 - i));
  print(i);
  print("\n", [1 0 0]);
  print("done\n");
end
)";
  RecordingSession parallel;
  ASSERT_EQ(parallel.ErrorOf(std::string(function) + "mthread(@report, [1; 2; 3; 4], \"threads\" = 4);"), "");
  RecordingSession serial;
  ASSERT_EQ(serial.ErrorOf(std::string(function) + "for (k = 1 : 4)\n  @report(k);\nend\n"), "");
  EXPECT_EQ(parallel.sink->Transcript(), serial.sink->Transcript());
  bool coloured = false;
  for (const auto& entry : parallel.sink->Entries()) {
    if (entry.style.colour) coloured = true;
  }
  EXPECT_TRUE(coloured);  // the style of what a call prints is kept
}
