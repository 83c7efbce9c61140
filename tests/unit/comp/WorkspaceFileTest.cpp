// Saving a workspace and reading it back gives the same values; damaged files are refused.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

#include "Dataset.h"
#include "TavixStructure.h"
#include "ValueKind.h"
#include "Workspace.h"
#include "WorkspaceFile.h"

TEST(WorkspaceFile, ValuesSurviveARoundTrip) {
  Workspace ws;
  Eigen::MatrixXd m(2, 3);
  m << 1.0 / 3.0, -0.0, 1e-300, std::numeric_limits<double>::quiet_NaN(),
      std::numeric_limits<double>::infinity(), -2.5e17;
  ws.Store("m", TavixValue::FromMatrix(m));
  ws.Store("empty", TavixValue::FromMatrix(Eigen::MatrixXd(0, 0)));
  ws.Store("text", TavixValue::FromString("two\nlines with _#_end spaces "));
  auto d = std::make_shared<Dataset>(std::vector<std::string>{"year", "firm"},
                                     (Eigen::MatrixXd(3, 2) << 2001, 1, 2002, 1, 2001, 2).finished());
  d->AddStringVariable("town", {"York", "", "Leeds"});
  ASSERT_EQ(d->SetPanelData("year", "firm", TimeFormat::Index), "");
  ws.Store("d", TavixValue::FromDataset(d));
  auto inner = std::make_shared<TavixStructure>();
  inner->AddMatrix("v", std::make_shared<Eigen::MatrixXd>(Eigen::Vector2d(1, 2)));
  auto outer = std::make_shared<TavixStructure>();
  outer->AddStructure("inner", inner);
  outer->AddString("name", std::make_shared<std::string>(""));
  ws.Store("s", TavixValue::FromStructure(outer));

  std::stringstream file;
  EXPECT_EQ(SaveWorkspace(ws, file), 0);
  Workspace back;
  std::string error;
  ASSERT_TRUE(LoadWorkspace(file, back, error)) << error;

  const Eigen::MatrixXd& m2 = *back.matrices.at("m");
  for (Eigen::Index i = 0; i < m.size(); ++i) {
    if (std::isnan(m(i))) {
      EXPECT_TRUE(std::isnan(m2(i)));
    } else {
      EXPECT_EQ(m2(i), m(i)) << i;  // every digit kept
    }
  }
  EXPECT_TRUE(std::signbit(m2(0, 1)));
  EXPECT_EQ(back.matrices.at("empty")->size(), 0);
  EXPECT_EQ(*back.strings.at("text"), "two\nlines with _#_end spaces ");
  const Dataset& d2 = *back.datasets.at("d");
  EXPECT_EQ(d2.VariableNames(), d->VariableNames());
  EXPECT_EQ(d2.StringValue("town", 2), "Leeds");
  EXPECT_TRUE(std::isnan(d2.Data()(1, 2)));
  EXPECT_EQ(d2.Structure().kind, DatasetKind::Panel);
  EXPECT_EQ(d2.Structure().groupVariable, "firm");
  const auto s2 = back.structures.at("s");
  EXPECT_EQ(*s2->GetpStructure("inner")->GetpMatrix("v"), Eigen::Vector2d(1, 2));
  EXPECT_EQ(*s2->GetpString("name"), "");
}

TEST(WorkspaceFile, DamagedFilesAreRefusedWithoutChanges) {
  Workspace ws;
  ws.Store("keep", TavixValue::FromScalar(1.0));
  std::string error;
  for (const char* text : {"", "something else\n", "TavixWorkspace 1\nmatrix a\n2 2\n1 2\n3\n",
                           "TavixWorkspace 1\nmatrix a\n1 1\nx\n",
                           "TavixWorkspace 1\nmystery a\n"}) {
    std::stringstream file(text);
    EXPECT_FALSE(LoadWorkspace(file, ws, error)) << text;
  }
  EXPECT_EQ(ws.ID_code("a"), kind::UNKNOWN);
  EXPECT_EQ(ws.ID_code("keep"), kind::MATRIX);
}
