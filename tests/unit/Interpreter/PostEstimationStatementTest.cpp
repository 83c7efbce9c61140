// The post-estimation statements as a script uses them: test against counts over the draws, the
// workspace left as it was by a failing statement, series added and replaced, models read back
// from a workspace file, the default model.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <sstream>

#include "Dataset.h"
#include "InterpreterTestSupport.h"
#include "Model.h"

namespace {

const char* kPrelude =
    "d = dataset([1.2 0.5 0; 2.3 1.5 1; 2.9 2.0 0; 4.4 3.5 1; 4.8 4.0 0; 6.1 5.5 1; 6.4 5.0 0; "
    "7.9 6.5 1; 8.1 7.0 0; 9.6 8.5 1; 10.2 9.0 0; 11.5 9.5 1], {y, x, z});\n"
    "m = lm(y ~ constant x z, \"draws\" = 500, \"burnin\" = 100, \"chains\" = 2);\n";

// The number in the "Successes" column of the row of `condition` in a test table.
long Successes(const std::string& transcript, const std::string& condition) {
  std::istringstream lines(transcript);
  std::string line;
  while (std::getline(lines, line)) {
    if (line.rfind(condition, 0) != 0 || line.find('\t') == std::string::npos) continue;
    long cases = 0, successes = 0;
    std::sscanf(line.c_str() + line.find('\t'), "%ld %ld", &cases, &successes);
    return successes;
  }
  return -1;
}

}  // namespace

// Each row counts the draws that satisfy its condition, and "Overall" those that satisfy all.
TEST(PostEstimationStatements, TestCountsTheDrawsThatSatisfyEachCondition) {
  RecordingSession s;
  ASSERT_EQ(s.ErrorOf(std::string(kPrelude) + "limit = 1.09;\ntest(y$x > limit, z < 0 | tau > 8);"), "");
  const Eigen::MatrixXd draws = *s.session.workspace.models.at("m")->GetpMatrix("draws");
  ASSERT_EQ(draws.rows(), 1000);
  const auto first = (draws.col(1).array() > 1.09);
  const auto second = (draws.col(2).array() < 0.0) || (draws.col(3).array() > 8.0);
  const std::string out = s.sink->Transcript();
  EXPECT_EQ(Successes(out, "y$x > limit"), first.count());
  EXPECT_EQ(Successes(out, "z < 0 | tau > 8"), second.count());
  EXPECT_EQ(Successes(out, "Overall"), (first && second).count());
  EXPECT_GT(first.count(), 0);
  EXPECT_LT(first.count(), 1000);
}

// A statement that fails adds nothing; one that succeeds adds its series, and again replaces them
// with a warning.
TEST(PostEstimationStatements, SeriesAreAddedOnlyBySucceedingStatements) {
  RecordingSession s;
  ASSERT_EQ(s.ErrorOf(kPrelude), "");
  const auto variables = [&] { return s.session.workspace.datasets.at("d")->VariableNames(); };
  EXPECT_NE(s.ErrorOf("predict(\"prefix\" = yhat, \"type\" = 4);"), "");
  EXPECT_NE(s.ErrorOf("store(fitted, leverage);"), "");
  EXPECT_EQ(variables().size(), 3u);
  ASSERT_EQ(s.ErrorOf("predict(\"prefix\" = yhat); store(fitted, residuals);"), "");
  EXPECT_EQ(variables(), (std::vector<std::string>{"y", "x", "z", "yhat_mean", "yhat_sd", "yhat_lower",
                                                   "yhat_upper", "fitted", "residuals"}));
  const Dataset& d = *s.session.workspace.datasets.at("d");
  EXPECT_LT((d.GetVariable("yhat_mean") - d.GetVariable("fitted")).cwiseAbs().maxCoeff(), 1e-12);
  EXPECT_LT((d.GetVariable("y") - d.GetVariable("fitted") - d.GetVariable("residuals")).cwiseAbs().maxCoeff(), 1e-12);
  s.sink->Clear();
  ASSERT_EQ(s.ErrorOf("store(fitted);"), "");
  EXPECT_NE(s.sink->Transcript().find("Variables of dataset \"d\" replaced: fitted."), std::string::npos);
  EXPECT_EQ(variables().size(), 9u);
}

// A model read back from a workspace file acts as it did, on its dataset found by name.
TEST(PostEstimationStatements, LoadedModelsStillAct) {
  const auto file = std::filesystem::temp_directory_path() / "tavix_postestimation_test.tvw";
  RecordingSession s;
  ASSERT_EQ(s.ErrorOf(std::string(kPrelude) + "save(\"" + file.string() + "\");"), "");
  RecordingSession t;
  ASSERT_EQ(t.ErrorOf("load(\"" + file.string() + "\");"), "");
  std::filesystem::remove(file);
  ASSERT_TRUE(t.session.workspace.models.at("m")->ProvidesAction("predict"));
  ASSERT_EQ(t.ErrorOf("predict(\"prefix\" = p); diagnostics(); mfx();"), "");
  const Eigen::VectorXd fitted = t.session.workspace.datasets.at("d")->GetVariable("p_mean");
  EXPECT_EQ(fitted.size(), 12);
  EXPECT_TRUE(fitted.allFinite());
}

// Without "model" the first model in the workspace's order is used; with none there is a message.
TEST(PostEstimationStatements, DefaultModelIsTheFirstOfTheWorkspace) {
  RecordingSession s;
  EXPECT_NE(s.ErrorOf("mfx();").find("The current workspace does not contain any models."), std::string::npos);
  ASSERT_EQ(s.ErrorOf(std::string(kPrelude) + "a = lm(y ~ constant x, \"draws\" = 200, \"burnin\" = 50);\n"
                                              "mfx();"),
            "");
  EXPECT_NE(s.sink->Transcript().find("Marginal effects on E(y|x) (model \"a\")"), std::string::npos);
}
