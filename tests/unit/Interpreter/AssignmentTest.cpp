// Assignments that scripts cannot set up alone yet: datasets as targets and operands.
#include <gtest/gtest.h>

#include "Dataset.h"
#include "InterpreterTestSupport.h"
#include "TavixStructure.h"

namespace {

struct DatasetAssignment : testing::Test {
  RecordingSession run;
  std::shared_ptr<Dataset> data;
  void SetUp() override {
    data = std::make_shared<Dataset>(std::vector<std::string>{"x", "y"},
                                     (Eigen::MatrixXd(3, 2) << 1, 4, 2, 5, 3, 6).finished());
    run.session.workspace.Store("d", TavixValue::FromDataset(data));
  }
  const Dataset& Current() { return *run.session.workspace.datasets.at("d"); }
};

}  // namespace

TEST_F(DatasetAssignment, VariablesAreAddedReplacedAndChecked) {
  EXPECT_EQ(run.ErrorOf("d.z = [7; 8; 9];\nd.x = d.y * 2;"), "");
  EXPECT_EQ(Current().VariableNames(), (std::vector<std::string>{"x", "y", "z"}));
  EXPECT_EQ(Current().GetVariable("x"), Eigen::Vector3d(8, 10, 12));
  EXPECT_EQ(run.ErrorOf("d.x = [1; 2];"),
            "In input \"test.tvx\", line 1\nd.x = [1; 2] ...\n"
            "Dimension mismatch between left- and right-side expressions.");
  EXPECT_EQ(run.ErrorOf("d.x = [1 2 3];"),
            "In input \"test.tvx\", line 1\nd.x = [1 2 3] ...\n"
            "Right-side expression in assignment to dataset variable must have one column.");
  EXPECT_EQ(run.ErrorOf("d.x = \"s\";"),
            "In input \"test.tvx\", line 1\nd.x = \"s\" ...\n"
            "Right-side expression in assignment to dataset variable is not a matrix.");
  EXPECT_EQ(Current().GetVariable("x"), Eigen::Vector3d(8, 10, 12));  // refused: unchanged
}

TEST_F(DatasetAssignment, MultipleAssignmentNamesTheDataset) {
  EXPECT_EQ(run.ErrorOf("function [a, b] = two(x)\n  a = x;\n  b = [x; x];\nend\n"
                        "[d.z, d(1:2, 1)] = @two([7; 8; 9]);"),
            "In input \"test.tvx\", line 5\n[d.z, d ...\n"
            "Inconsistent left- and right-side number of elements.");
  EXPECT_EQ(Current().GetVariable("z"), Eigen::Vector3d(7, 8, 9));  // stored before the failure
  EXPECT_EQ(run.ErrorOf("[d.w, k] = @two([1; 2]);"),
            "In input \"test.tvx\", line 1\n[d.w ...\n"
            "Dimension mismatch between left- and right-side expressions in assignment to "
            "dataset \"d\".");
  EXPECT_FALSE(Current().VariableExists("w"));
}

TEST_F(DatasetAssignment, DatasetsAreValues) {
  EXPECT_EQ(run.ErrorOf("e = d;\ne.x = [0; 0; 0];\nd(1, 2) = 50;"), "");
  EXPECT_EQ(data->GetVariable("x"), Eigen::Vector3d(1, 2, 3));  // the original never changes
  EXPECT_EQ(Current().GetVariable("y"), Eigen::Vector3d(50, 5, 6));
  EXPECT_EQ(run.session.workspace.datasets.at("e")->GetVariable("x"), Eigen::Vector3d(0, 0, 0));
  EXPECT_EQ(run.session.workspace.datasets.at("e")->GetVariable("y"), Eigen::Vector3d(4, 5, 6));
  // Datasets take part in arithmetic as their data.
  EXPECT_EQ(run.ErrorOf("m = d + 1;\nn = d(2:3, 1)';"), "");
  EXPECT_EQ(*run.session.workspace.matrices.at("n"), Eigen::RowVector2d(2, 3));
  EXPECT_EQ(run.session.workspace.matrices.at("m")->cols(), 2);
}

TEST_F(DatasetAssignment, StringVariablesAreOverwrittenOnlyWhole) {
  data->AddStringVariable("town", {"York", "Leeds", "York"});
  EXPECT_EQ(run.ErrorOf("m = d * 2;"),
            "In input \"test.tvx\", line 1\nm = d * 2 ...\nDataset \"d\" contains string variables "
            "and cannot be used in mathematical expressions.");
  EXPECT_EQ(run.ErrorOf("m = d(1:2, 2:3);"),
            "In input \"test.tvx\", line 1\nm = d(1:2, 2:3) ...\nThe requested range from dataset "
            "\"d\" contains string variables and cannot be turned into a matrix.");
  EXPECT_EQ(run.ErrorOf("d(1, 3) = 0;"),
            "In input \"test.tvx\", line 1\nd(1, 3) = 0 ...\nThe range requested from dataset \"d\" "
            "contains only part of a string variable. A variable must contain either all string "
            "or all numeric values.");
  EXPECT_TRUE(Current().IsStringVariable("town"));
  EXPECT_EQ(run.ErrorOf("d(:, 3) = 0;"), "");
  EXPECT_FALSE(Current().IsStringVariable("town"));
  EXPECT_NE(run.sink->Transcript().find("Dataset \"d\" contained one or more string variables in "
                                        "the requested range, which have been overwritten and are "
                                        "now numeric."),
            std::string::npos);
  EXPECT_EQ(run.ErrorOf("m = d(1, 3);"), "");
}

TEST(Assignment, RangeWritesInPlaceOnlyWhenNothingElseSharesTheMatrix) {
  RecordingSession run;
  ASSERT_EQ(run.ErrorOf("a = [1 2 3];\nb = a;"), "");
  Workspace& ws = run.session.workspace;
  EXPECT_EQ(ws.matrices.at("a"), ws.matrices.at("b"));  // shared on copy
  const Eigen::MatrixXd* before = ws.matrices.at("a").get();
  ASSERT_EQ(run.ErrorOf("b(2) = 9;"), "");
  EXPECT_NE(ws.matrices.at("b").get(), before);  // copied before writing
  const Eigen::MatrixXd* unshared = ws.matrices.at("b").get();
  ASSERT_EQ(run.ErrorOf("b(3) = 7;"), "");
  EXPECT_EQ(ws.matrices.at("b").get(), unshared);  // written in place
  EXPECT_EQ(*ws.matrices.at("a"), Eigen::RowVector3d(1, 2, 3));
  EXPECT_EQ(*ws.matrices.at("b"), Eigen::RowVector3d(1, 9, 7));
  // A structure member taken out is a value too.
  ASSERT_EQ(run.ErrorOf("s.inner.v = 1;\nt = s.inner;\ns.inner.v = 2;"), "");
  EXPECT_EQ((*ws.structures.at("t")->GetpMatrix("v"))(0, 0), 1.0);
  EXPECT_EQ(run.ErrorOf("x = 1;\nx.member = 2;"),
            "In input \"test.tvx\", line 2\nx.member = 2 ...\n\"x\" is not a structure and cannot "
            "hold elements.");
}
