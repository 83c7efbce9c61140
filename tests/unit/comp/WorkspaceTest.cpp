// The workspace and its containers: look-up order, replacing, generations, structures, datasets.
#include <gtest/gtest.h>

#include "Dataset.h"
#include "TavixOrderStructure.h"
#include "TavixStructure.h"
#include "Workspace.h"

TEST(Workspace, NamesResolveInKindOrderAndStoringReplacesAcrossKinds) {
  Workspace ws;
  EXPECT_EQ(ws.ID_code("x"), kind::UNKNOWN);
  ws.datasets["x"] = std::make_shared<Dataset>();
  ws.strings["x"] = std::make_shared<std::string>("s");
  EXPECT_EQ(ws.ID_code("x"), kind::DATASET);
  ws.matrices["x"] = std::make_shared<Eigen::MatrixXd>(Eigen::MatrixXd::Zero(1, 1));
  EXPECT_EQ(ws.ID_code("x"), kind::MATRIX);  // matrices come first
  EXPECT_EQ(ws.Get("x").code, kind::MATRIX);

  ws.Store("x", TavixValue::FromString("now a string"));
  EXPECT_EQ(ws.ID_code("x"), kind::STRING);
  EXPECT_EQ(ws.datasets.count("x") + ws.matrices.count("x"), 0u);
  EXPECT_EQ(*ws.Get("x").string, "now a string");
}

TEST(Workspace, GenerationChangesOnlyWhenSomethingIsRemoved) {
  Workspace ws;
  const auto start = ws.Generation();
  ws.Store("a", TavixValue::FromScalar(1));
  ws.Store("a", TavixValue::FromScalar(2));  // matrix over matrix: same entry
  EXPECT_EQ(ws.Generation(), start);
  ws.Store("a", TavixValue::FromString("s"));
  EXPECT_GT(ws.Generation(), start);
  const auto before = ws.Generation();
  EXPECT_FALSE(ws.Remove("nothing"));
  EXPECT_EQ(ws.Generation(), before);
  EXPECT_TRUE(ws.Remove("a"));
  EXPECT_GT(ws.Generation(), before);
  ws.Clear();
  EXPECT_GT(ws.Generation(), before + 1);
}

TEST(TavixStructure, MembersKindsNestingAndIndependentCopies) {
  auto inner = std::make_shared<TavixStructure>();
  inner->AddMatrix("m", std::make_shared<Eigen::MatrixXd>(Eigen::MatrixXd::Ones(2, 2)));
  TavixStructure s;
  s.AddStructure("inner", inner);
  s.AddString("name", std::make_shared<std::string>("beta"));
  int code = 0;
  ASSERT_TRUE(s.HasMember("inner", code));
  EXPECT_EQ(code, kind::STRUCTURE);
  EXPECT_FALSE(s.HasMember("missing", code));
  EXPECT_EQ(s.GetpMatrix("name"), nullptr);  // a member of another kind
  std::string text;
  ASSERT_TRUE(s.GetString("name", text));
  EXPECT_EQ(text, "beta");
  std::vector<std::string> names;
  s.GetStructureNames(names);
  EXPECT_EQ(names, std::vector<std::string>{"inner"});
  EXPECT_TRUE(s.HasStrings());
  EXPECT_FALSE(s.HasDatasets());

  s.AddMatrix("name", std::make_shared<Eigen::MatrixXd>(Eigen::MatrixXd::Zero(1, 1)));
  ASSERT_TRUE(s.HasMember("name", code));
  EXPECT_EQ(code, kind::MATRIX);  // adding a name again replaces it, whatever its kind

  // A copy's nested structures are its own.
  auto copy = s.Copy();
  copy->GetpStructure("inner")->AddString("added", std::make_shared<std::string>("x"));
  EXPECT_FALSE(inner->HasMember("added", code));
  s.RemoveString("inner");  // wrong kind: nothing removed
  EXPECT_TRUE(s.HasMember("inner", code));
  s.RemoveStructure("inner");
  EXPECT_FALSE(s.HasMember("inner", code));
}

TEST(TavixOrderStructure, OutputsKeepTheirPositionsAndKinds) {
  TavixOrderStructure out;
  out.Append(TavixValue::FromScalar(3));
  out.Append(TavixValue::FromString("second"));
  out.Append(TavixValue::FromStructure(std::make_shared<TavixStructure>()));
  EXPECT_EQ(out.NumberOfElements(), 3);
  EXPECT_EQ(out.GetItemCode(0), kind::MATRIX);
  EXPECT_EQ(out.GetItemCode(1), kind::STRING);
  EXPECT_EQ(out.GetItemCode(3), kind::UNKNOWN);
  EXPECT_EQ((*out.GetpMatrix("0"))(0, 0), 3.0);
  EXPECT_EQ(*out.GetValue(1).string, "second");
  EXPECT_NE(out.ReleaseStructure("2"), nullptr);
  EXPECT_EQ(out.ReleaseStructure("2"), nullptr);  // already taken
  out.RemoveMatrix("0");
  int code = 0;
  EXPECT_FALSE(out.HasMember("0", code));
}

TEST(Dataset, VariablesStringCodesAndSizes) {
  Dataset d({"x", "y"}, (Eigen::MatrixXd(3, 2) << 1, 4, 2, 5, 3, 6).finished());
  EXPECT_TRUE(d.AddStringVariable("town", {"York", "Leeds", "York"}));
  EXPECT_TRUE(d.IsStringVariable("town"));
  EXPECT_TRUE(d.HasStringVariables());
  EXPECT_EQ(d.GetVariable("town"), Eigen::Vector3d(1, 2, 1));
  EXPECT_EQ(d.StringValue("town", 1), "Leeds");
  EXPECT_FALSE(d.AddVariable("short", Eigen::Vector2d(1, 2)));  // wrong length
  EXPECT_FALSE(d.AddVariable("x", Eigen::Vector3d(1, 2, 3)));   // name taken
  EXPECT_EQ(d.VariableNames(), (std::vector<std::string>{"x", "y", "town"}));
  EXPECT_EQ(d.GetData().cols(), 3);

  EXPECT_TRUE(d.ReplaceVariable("town", Eigen::Vector3d(7, 8, 9)));
  EXPECT_FALSE(d.IsStringVariable("town"));  // replaced by numbers: numeric now
  EXPECT_FALSE(d.HasStringVariables());
  EXPECT_EQ(d.GetData()(2, 2), 9.0);
  EXPECT_THROW(Dataset({"only"}, Eigen::MatrixXd::Zero(2, 2)), std::invalid_argument);

  Dataset empty;
  EXPECT_TRUE(empty.AddVariable("first", Eigen::Vector2d(1, 2)));
  EXPECT_EQ(empty.NumberOfObservations(), 2);
}
