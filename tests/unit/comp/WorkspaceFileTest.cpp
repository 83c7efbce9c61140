// Saving a workspace and reading it back gives the same values; damaged files are refused.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <sstream>

#include "Dataset.h"
#include "Model.h"
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
  static const char kAwkward[] = "two\n_#_end_of_string_#_\nlines\r\n\0bytes ";
  ws.Store("text", TavixValue::FromString(std::string(kAwkward, sizeof kAwkward - 1)));
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
  EXPECT_EQ(*back.strings.at("text"), *ws.strings.at("text"));
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

namespace {

// A small estimated model on dataset `d`: two chains of draws, a result, a description.
std::shared_ptr<Model> SmallModel(const std::shared_ptr<Dataset>& d) {
  auto model = std::make_shared<Model>();
  model->Description().typeName = "LM";
  model->Description().keyword = "lm";
  model->Description().dependent = "y";
  model->Description().regressors = {"constant", "x"};
  model->Description().constraints = {"x = 1"};
  model->Description().observations = 3;
  model->Description().gibbs = (Eigen::VectorXd(5) << 4, 1, 2, 1, 42).finished();
  model->SetDraws({Eigen::MatrixXd::Random(4, 3), Eigen::MatrixXd::Random(4, 3)},
                  {"y$constant", "y$x", "tau"});
  model->AddResult("logML", Eigen::MatrixXd::Constant(1, 1, -12.25));
  model->SetDataset(d, "d");
  return model;
}

}  // namespace

TEST(WorkspaceFile, ModelsKeepTheirDrawsResultsAndDataset) {
  Workspace ws;
  auto d = std::make_shared<Dataset>(std::vector<std::string>{"y", "x"}, Eigen::MatrixXd::Random(3, 2));
  ws.Store("d", TavixValue::FromDataset(d));
  const auto model = SmallModel(d);
  ws.Store("m", TavixValue::FromModel(model));
  // A model whose dataset is not in the file comes back without data.
  auto orphan = SmallModel(std::make_shared<Dataset>());
  orphan->SetDataset(std::make_shared<Dataset>(), "gone");
  auto holder = std::make_shared<TavixStructure>();
  holder->AddModel("inner", orphan);
  ws.Store("s", TavixValue::FromStructure(holder));

  std::stringstream file;
  EXPECT_EQ(SaveWorkspace(ws, file), 0);
  Workspace back;
  std::string error;
  ASSERT_TRUE(LoadWorkspace(file, back, error)) << error;
  const Model& m = *back.models.at("m");
  ASSERT_EQ(m.Draws().size(), 2u);
  EXPECT_EQ(m.Draws()[1], model->Draws()[1]);
  EXPECT_EQ(m.Labels(), model->Labels());
  EXPECT_EQ(m.ScalarResult("logML"), -12.25);
  EXPECT_EQ(*m.GetpMatrix("post_mean"), *model->GetpMatrix("post_mean"));
  EXPECT_EQ(m.Description().regressors, model->Description().regressors);
  EXPECT_EQ(m.Description().constraints, model->Description().constraints);
  EXPECT_EQ(m.Description().gibbs, model->Description().gibbs);
  EXPECT_EQ(m.GetDataset(), back.datasets.at("d"));
  EXPECT_FALSE(m.DatasetWasDeleted());
  const auto inner = back.structures.at("s")->GetpModel("inner");
  ASSERT_TRUE(inner);
  EXPECT_TRUE(inner->DatasetWasDeleted());
  EXPECT_EQ(inner->DatasetName(), "gone");
}

TEST(WorkspaceFile, DamagedFilesAreRefusedWithoutChanges) {
  Workspace ws;
  ws.Store("keep", TavixValue::FromScalar(1.0));
  std::string error;
  for (const char* text : {"", "something else\n", "TavixWorkspace 2\nmatrix a\n2 2\n1 2\n3\n",
                           "TavixWorkspace 2\nmatrix a\n1 1\nx\n", "TavixWorkspace 2\nmystery a\n",
                           "TavixWorkspace 2\nmatrix a\n100000000 100000000\n1\n",
                           "TavixWorkspace 2\nstring s\n99999\nshort\n_#_end_of_string_#_\n"}) {
    std::stringstream file(text);
    EXPECT_FALSE(LoadWorkspace(file, ws, error)) << text;
  }
  EXPECT_EQ(ws.ID_code("a"), kind::UNKNOWN);
  EXPECT_EQ(ws.ID_code("keep"), kind::MATRIX);
}

TEST(WorkspaceFile, MutatedFilesNeverCrash) {
  // A saved workspace with every kind of record, then thousands of damaged copies: bytes changed,
  // inserted or removed, and truncations. Each load either succeeds or is refused cleanly.
  Workspace ws;
  ws.Store("m", TavixValue::FromMatrix(Eigen::MatrixXd::Random(3, 4)));
  ws.Store("t", TavixValue::FromString("a string\nover two lines"));
  auto d = std::make_shared<Dataset>(std::vector<std::string>{"t", "g"},
                                     (Eigen::MatrixXd(2, 2) << 1, 1, 2, 1).finished());
  d->AddStringVariable("s", {"x", "y"});
  ws.Store("d", TavixValue::FromDataset(d));
  auto s = std::make_shared<TavixStructure>();
  s->AddMatrix("v", std::make_shared<Eigen::MatrixXd>(Eigen::Vector2d(1, 2)));
  ws.Store("s", TavixValue::FromStructure(s));
  ws.Store("model", TavixValue::FromModel(SmallModel(d)));
  std::ostringstream saved;
  SaveWorkspace(ws, saved);
  const std::string good = saved.str();
  std::mt19937 engine(7);
  int loaded = 0;
  for (int trial = 0; trial < 3000; ++trial) {
    std::string bad = good;
    const int edits = 1 + static_cast<int>(engine() % 3);
    for (int e = 0; e < edits && !bad.empty(); ++e) {
      const std::size_t at = engine() % bad.size();
      switch (engine() % 4) {
        case 0: bad[at] = static_cast<char>(engine() % 256); break;
        case 1: bad.insert(at, 1, "0123456789 \n-.e"[engine() % 16]); break;
        case 2: bad.erase(at, 1); break;
        default: bad.resize(at); break;
      }
    }
    std::stringstream file(bad);
    Workspace target;
    std::string error;
    if (LoadWorkspace(file, target, error)) {
      ++loaded;
    } else {
      EXPECT_FALSE(error.empty());
      EXPECT_EQ(target.ID_code("m"), kind::UNKNOWN);  // a refused file adds nothing
    }
  }
  EXPECT_LT(loaded, 3000);  // the damage is noticed most of the time
}
