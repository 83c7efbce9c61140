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

namespace {

const char kDamaged[] = "the file is not a Tavix workspace or it is damaged.";

// The words the tests reserve, as the interpreter reserves its keywords.
bool Reserved(const std::string& word) { return word == "print" || word == "lm"; }

// Saves `ws` without the checks save makes, then loads the file into a workspace holding one
// value: true when it loads. A refused load must leave that workspace as it was.
bool SavedFileLoads(const Workspace& ws, std::string* text = nullptr) {
  std::stringstream file;
  SaveWorkspace(ws, file);
  if (text) *text = file.str();
  Workspace target;
  target.Store("keep", TavixValue::FromScalar(1.0));
  std::string error;
  const bool loaded = LoadWorkspace(file, target, error, Reserved);
  if (!loaded) {
    EXPECT_EQ(error, kDamaged);
    EXPECT_EQ(target.Names(), std::vector<std::string>{"keep"});
  }
  return loaded;
}

// A panel dataset with a string variable.
std::shared_ptr<Dataset> Panel() {
  auto d = std::make_shared<Dataset>(std::vector<std::string>{"t", "g", "y", "x"},
                                     (Eigen::MatrixXd(4, 4) << 1, 1, 2, 0.5, 2, 1, 3, 1.5, 1, 2, 4, 2, 2, 2, 6, 3).finished());
  d->AddStringVariable("town", {"York", "Leeds", "", "York"});
  EXPECT_EQ(d->SetPanelData("t", "g", TimeFormat::Index), "");
  return d;
}

// An estimated model of class `typeName` on `d`, laid out as that class lays out its draws.
std::shared_ptr<Model> Estimated(const std::string& typeName, const std::shared_ptr<Dataset>& d) {
  auto model = Model::Create(typeName);
  ModelDescription& desc = model->Description();
  desc.typeName = typeName;
  desc.keyword = typeName == "LM_RE" ? "lm_re" : "lm";
  desc.dependent = "y";
  desc.regressors = {"constant", "x"};
  std::vector<std::string> labels = {"y$constant", "y$x"};
  if (typeName == "LM") labels.push_back("tau");
  if (typeName == "LM_RE") labels.insert(labels.end(), {"tau", "omega"});
  if (typeName == "LM_HET") {
    desc.secondList = {"constant", "x"};
    labels.insert(labels.end(), {"logtau$constant", "logtau$x"});
  }
  desc.observations = 4;
  desc.gibbs = (Eigen::VectorXd(5) << 30, 5, 3, 2, 42).finished();  // 15 kept draws per chain
  std::vector<Eigen::MatrixXd> draws;
  for (int c = 0; c < 3; ++c) draws.push_back(Eigen::MatrixXd::Random(15, static_cast<Eigen::Index>(labels.size())).cwiseAbs());
  model->SetDraws(std::move(draws), std::move(labels));
  model->AddResult("nobs", Eigen::MatrixXd::Constant(1, 1, 4.0));
  model->AddResult("logML", Eigen::MatrixXd::Constant(1, 1, -3.5));
  model->SetDataset(d, "d");
  return model;
}

}  // namespace

TEST(WorkspaceFile, ValuesThatContradictThemselvesAreRefusedBySaveAndByLoad) {
  // Each case: a workspace holding one contradictory value, and the name save's message gives.
  struct Case {
    std::string what, name;
    std::function<void(Workspace&)> make;
  };
  const auto withDataset = [](std::function<void(Dataset&)> spoil) {
    return [spoil](Workspace& ws) {
      auto d = Panel();
      spoil(*d);
      ws.Store("d", TavixValue::FromDataset(d));
    };
  };
  const auto withModel = [](const std::string& typeName, std::function<void(Model&)> spoil) {
    return [typeName, spoil](Workspace& ws) {
      auto d = Panel();
      ws.Store("d", TavixValue::FromDataset(d));
      auto m = Estimated(typeName, d);
      spoil(*m);
      ws.Store("m", TavixValue::FromModel(m));
    };
  };
  const auto codes = [](double code) {
    return [code](Dataset& d) {
      Eigen::MatrixXd data = d.Data();
      data(1, 4) = code;
      auto spoiled = Dataset(d.VariableNames(), data);
      for (const auto& v : d.VariableNames()) spoiled.RestoreLabels(v, d.Labels(v));
      spoiled.RestoreStructure(d.Structure());
      d = spoiled;
    };
  };
  const auto chains = [](std::function<void(std::vector<Eigen::MatrixXd>&, std::vector<std::string>&)> spoil) {
    return [spoil](Model& m) {
      std::vector<Eigen::MatrixXd> draws = m.Draws();
      std::vector<std::string> labels = m.Labels();
      spoil(draws, labels);
      m.SetDraws(std::move(draws), std::move(labels));
    };
  };
  const std::vector<Case> cases = {
      {"string code above the labels", "d", withDataset(codes(99))},
      {"string code 0", "d", withDataset(codes(0))},
      {"negative string code", "d", withDataset(codes(-5))},
      {"huge string code", "d", withDataset(codes(1e300))},
      {"infinite string code", "d", withDataset(codes(INFINITY))},
      {"fractional string code", "d", withDataset(codes(1.5))},
      {"time variable missing", "d",
       withDataset([](Dataset& d) { d.RestoreStructure({DatasetKind::TimeSeries, "when", "", TimeFormat::Index}); })},
      {"group variable missing", "d",
       withDataset([](Dataset& d) { d.RestoreStructure({DatasetKind::Panel, "t", "who", TimeFormat::Index}); })},
      {"variable named as no identifier", "d", withDataset([](Dataset& d) { d.RenameVariable("x", "2x"); })},
      {"variable named by a keyword", "d", withDataset([](Dataset& d) { d.RenameVariable("x", "print"); })},
      {"variables of one name", "d",
       withDataset([](Dataset& d) { d = Dataset({"a", "a"}, Eigen::MatrixXd::Ones(2, 2)); })},
      {"value named by a keyword", "lm", [](Workspace& ws) { ws.Store("lm", TavixValue::FromScalar(1)); }},
      {"value named as no identifier", "2x", [](Workspace& ws) { ws.Store("2x", TavixValue::FromScalar(1)); }},
      {"member named by a keyword", "s.print",
       [](Workspace& ws) {
         auto s = std::make_shared<TavixStructure>();
         s->AddString("print", std::make_shared<std::string>("x"));
         ws.Store("s", TavixValue::FromStructure(s));
       }},
      {"empty matrix too wide", "e",
       [](Workspace& ws) { ws.Store("e", TavixValue::FromMatrix(Eigen::MatrixXd(0, kMaxEmptyExtent + 1))); }},
      {"no draws", "m", withModel("LM", chains([](auto& draws, auto&) { draws.clear(); }))},
      {"fewer chains than settings", "m", withModel("LM", chains([](auto& draws, auto&) { draws.pop_back(); }))},
      {"chains of different lengths", "m",
       withModel("LM", chains([](auto& draws, auto&) { draws[1].conservativeResize(14, Eigen::NoChange); }))},
      {"chains of different widths", "m",
       withModel("LM", chains([](auto& draws, auto&) { draws[2].conservativeResize(Eigen::NoChange, 2); }))},
      {"labels without draws", "m", withModel("LM", chains([](auto&, auto& labels) { labels.push_back("extra"); }))},
      {"draws longer than settings keep", "m", withModel("LM", [](Model& m) { m.Description().gibbs(3) = 3; })},
      {"zero draws setting", "m", withModel("LM", [](Model& m) { m.Description().gibbs(0) = 0; })},
      {"negative burn-in", "m", withModel("LM", [](Model& m) { m.Description().gibbs(1) = -1; })},
      {"zero chains", "m", withModel("LM", [](Model& m) { m.Description().gibbs(2) = 0; })},
      {"zero thinning", "m", withModel("LM", [](Model& m) { m.Description().gibbs(3) = 0; })},
      {"fractional seed", "m", withModel("LM", [](Model& m) { m.Description().gibbs(4) = 0.5; })},
      {"infinite seed", "m", withModel("LM", [](Model& m) { m.Description().gibbs(4) = INFINITY; })},
      {"four settings", "m",
       withModel("LM", [](Model& m) { m.Description().gibbs.conservativeResize(4); })},
      {"observations beyond counting", "m",
       withModel("LM", [](Model& m) { m.Description().observations = 9200000000000000000L; })},
      {"nobs against observations", "m", withModel("LM", [](Model& m) { m.Description().observations = 5; })},
      {"repeated regressor", "m",
       withModel("LM", [](Model& m) { m.Description().regressors = {"x", "x"}; })},
      {"regressors against labels", "m",
       withModel("LM", [](Model& m) { m.Description().regressors = {"x", "constant"}; })},
      {"fewer regressors than coefficients", "m",
       withModel("LM", [](Model& m) { m.Description().regressors = {"constant"}; })},
      {"second list in LM", "m", withModel("LM", [](Model& m) { m.Description().secondList = {"x"}; })},
      {"second list against labels", "m", withModel("LM_HET", [](Model& m) { m.Description().secondList = {"x", "w"}; })},
      {"LM_RE without omega", "m",
       withModel("LM_RE", chains([](auto& draws, auto& labels) {
                   labels.pop_back();
                   for (auto& chain : draws) chain.conservativeResize(Eigen::NoChange, 3);
                 }))},
      {"keyword of another class", "m", withModel("LM_RE", [](Model& m) { m.Description().keyword = "lm"; })},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Workspace ws;
    c.make(ws);
    std::string message;
    EXPECT_FALSE(WorkspaceFitsFile(ws, message, Reserved));
    EXPECT_NE(message.find("\"" + c.name + "\" cannot be saved: "), std::string::npos) << message;
    std::string text;
    EXPECT_FALSE(SavedFileLoads(ws, &text)) << text;
  }
  // Models of every class as estimation leaves them, in a structure too, fit and load.
  Workspace ws;
  auto d = Panel();
  ws.Store("d", TavixValue::FromDataset(d));
  auto s = std::make_shared<TavixStructure>();
  for (const char* typeName : {"LM", "LM_HET", "LM_RE"}) {
    ws.Store(std::string("m_") + typeName, TavixValue::FromModel(Estimated(typeName, d)));
    s->AddModel(typeName, Estimated(typeName, d));
  }
  ws.Store("s", TavixValue::FromStructure(s));
  std::string message;
  EXPECT_TRUE(WorkspaceFitsFile(ws, message, Reserved)) << message;
  EXPECT_TRUE(SavedFileLoads(ws));
}

namespace {

// `text` with the first occurrence of `from` (which must be there) replaced by `to`.
std::string Edited(std::string text, const std::string& from, const std::string& to) {
  const auto at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

bool Loads(const std::string& text, Workspace& target) {
  std::stringstream file(text);
  std::string error;
  return LoadWorkspace(file, target, error, Reserved);
}

}  // namespace

TEST(WorkspaceFile, RecordsThatContradictTheFileAreRefused) {
  Workspace ws;
  auto d = Panel();
  ws.Store("d", TavixValue::FromDataset(d));
  ws.Store("m", TavixValue::FromModel(Estimated("LM", d)));
  ws.Store("a", TavixValue::FromMatrix(Eigen::MatrixXd::Constant(2, 3, 1.25)));
  std::stringstream file;
  SaveWorkspace(ws, file);
  const std::string good = file.str();
  Workspace back;
  ASSERT_TRUE(Loads(good, back));
  // Each edit is of one field or line of the good file.
  const std::vector<std::pair<std::string, std::string>> edits = {
      {"matrix a\n2 3\n", "matrix a\n1000000000000000000 0\n"},  // rows without their lines
      {"matrix a\n2 3\n", "matrix a\n3 0\n"},
      {"matrix a\n2 3\n", "matrix a\n0 1000000000000000000\n"},
      {"matrix a\n2 3\n", "matrix a\n2 2\n"},  // rows longer than the matrix is wide
      {"matrix a\n2 3\n", "matrix a\n2 4\n"},
      {"matrix a\n2 3\n1.25 1.25 1.25\n", "matrix a\n2 3\n1.25 1.25 1.25 1.25\n"},
      {"matrix a\n2 3\n1.25 1.25 1.25\n", "matrix a\n2 3\n1.25 1.25 1.25\n1.25 1.25 1.25\n"},
      {"matrix a\n", "matrix d\n"},  // one name, two values
      {"matrix a\n", "matrix print\n"},
      {"matrix a\n", "matrix a b\n"},
      {"4 0 0\n", "9200000000000000000 0 0\n"},  // observations, dropped, dataset cleared
      {"4 0 0\n", "9.2e18 0 0\n"},
      {"4 0 0\n", "4 0 2\n"},
      {"4 0 0\n", "-4 0 0\n"},
      {"5 1\n30\n5\n3\n2\n42\n", "5 1\n30\n5\n-3\n2\n42\n"},  // Gibbs settings
      {"5 1\n30\n5\n3\n2\n42\n", "5 1\n30\n5\n4\n2\n42\n"},
      {"5 1\n30\n5\n3\n2\n42\n", "5 1\n1e18\n5\n3\n2\n42\n"},
      {"5 1\n30\n5\n3\n2\n42\n", "1 5\n30 5 3 2 42\n"},
      {"\n3\n15 3\n", "\n9223372036854775807\n15 3\n"},  // the count of chains
      {"\n3\n15 3\n", "\n2\n15 3\n"},
      {"y$x\n_#_end_of_string_#_\n", "y$z\n_#_end_of_string_#_\n"},  // labels against regressors
  };
  for (const auto& [from, to] : edits) {
    SCOPED_TRACE(to);
    Workspace target;
    EXPECT_FALSE(Loads(Edited(good, from, to), target));
    EXPECT_TRUE(target.Names().empty());
  }
}

TEST(WorkspaceFile, WhatTheDrawsDefineIsComputedAgainOnLoading) {
  // A summary of the wrong length and a false count of draws in the file are not believed.
  auto model = Estimated("LM", nullptr);
  const Eigen::MatrixXd mean = *model->GetpMatrix("post_mean");
  model->AddResult("post_mean", Eigen::MatrixXd::Zero(1, 1));
  model->AddResult("ndraws", Eigen::MatrixXd::Constant(1, 1, 1e9));
  model->AddResult("rhat", Eigen::MatrixXd::Zero(7, 2));
  Workspace ws;
  ws.Store("m", TavixValue::FromModel(model));
  std::stringstream file;
  SaveWorkspace(ws, file);
  Workspace back;
  std::string error;
  ASSERT_TRUE(LoadWorkspace(file, back, error)) << error;
  const Model& m = *back.models.at("m");
  EXPECT_EQ(*m.GetpMatrix("post_mean"), mean);
  EXPECT_EQ(m.ScalarResult("ndraws"), 15.0);
  EXPECT_EQ(m.GetpMatrix("rhat")->rows(), 3);
  EXPECT_EQ(m.ScalarResult("logML"), -3.5);
}

TEST(WorkspaceFile, SaveAndLoadShareTheirLimits) {
  // Matrices without elements: rows without columns keep their lines; a dataset without variables
  // keeps its observations.
  Workspace ws;
  ws.Store("tall", TavixValue::FromMatrix(Eigen::MatrixXd(3, 0)));
  ws.Store("wide", TavixValue::FromMatrix(Eigen::MatrixXd(0, kMaxEmptyExtent)));
  auto bare = std::make_shared<Dataset>(std::vector<std::string>{"a"}, Eigen::MatrixXd::Ones(2, 1));
  bare->DeleteVariable("a");
  ws.Store("bare", TavixValue::FromDataset(bare));
  std::string message;
  EXPECT_TRUE(WorkspaceFitsFile(ws, message));
  std::stringstream file;
  SaveWorkspace(ws, file);
  Workspace back;
  std::string error;
  ASSERT_TRUE(LoadWorkspace(file, back, error)) << error;
  EXPECT_EQ(back.matrices.at("tall")->rows(), 3);
  EXPECT_EQ(back.matrices.at("wide")->cols(), kMaxEmptyExtent);
  EXPECT_EQ(back.datasets.at("bare")->NumberOfObservations(), 2);

  // Structures kMaxStructureDepth deep save and load; one level more neither.
  auto deepest = [](int depth) {
    auto s = std::make_shared<TavixStructure>();
    s->AddMatrix("v", std::make_shared<Eigen::MatrixXd>(Eigen::MatrixXd::Ones(1, 1)));
    for (int level = 1; level < depth; ++level) {
      auto outer = std::make_shared<TavixStructure>();
      outer->AddStructure("n", s);
      s = outer;
    }
    Workspace ws;
    ws.Store("s", TavixValue::FromStructure(s));
    return ws;
  };
  const Workspace fits = deepest(kMaxStructureDepth);
  EXPECT_TRUE(WorkspaceFitsFile(fits, message)) << message;
  EXPECT_TRUE(SavedFileLoads(fits));
  const Workspace deeper = deepest(kMaxStructureDepth + 1);
  EXPECT_FALSE(WorkspaceFitsFile(deeper, message));
  EXPECT_EQ(message, "Structure \"s\" nests more than 200 levels deep, more than a workspace file holds.");
  EXPECT_FALSE(SavedFileLoads(deeper));
}
