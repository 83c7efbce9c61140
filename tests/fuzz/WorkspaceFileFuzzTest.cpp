// Workspace files mutated field by field: every load either fails with the damaged-file message
// and leaves the workspace empty, or gives values that every statement can use without reading
// out of bounds (run under the sanitizers in CI).
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "Interpreter.h"
#include "RecordingSink.h"
#include "TavixError.h"

namespace fs = std::filesystem;

namespace {

// Every kind of value: matrices (one empty), strings, a panel dataset with a string variable,
// nested structures, and models (two chains, and the individual-effects model) on the dataset.
const char* kWorkspace = R"(
a = [1 2; 3 4];
s = "text";
d.y = 2 * d.x + 1;
d.y(2) = 4;
set_pd(t, g);
st.inner.m = [1; 2];
st.inner.txt = "deep";
st.n = 3;
m = lm(y ~ constant x, "draws" = 20, "burnin" = 5, "chains" = 2);
r = lm_re(y ~ constant x, "draws" = 20, "burnin" = 5);
)";

// The dataset d, with a string variable.
const char* kDataset = "g,t,x,w,name\n1,1,0.5,1,York\n1,2,1.5,2,Leeds\n2,1,2.0,1,York\n2,2,3.5,3,Hull\n"
                       "3,1,4.0,2,\"Hull, East\"\n3,2,5.5,1,Leeds\n";

// What a user may do with whatever loaded: each statement on its own, errors allowed.
const std::vector<std::string> kUses = {
    "print(a);", "print(s);", "print(st.inner.m);", "who;", "summary(\"dataset\" = d);",
    "sortd(name, \"dataset\" = d);", "sortd(y, \"dataset\" = d);", "print(m);", "print(r);",
    "diagnostics(\"model\" = m);", "mfx(\"model\" = m);", "predict(\"model\" = r, \"type\" = 2);",
    "predict(\"model\" = m, \"prefix\" = p);", "store(effects, \"model\" = r);", "test(y$x > 0, \"model\" = m);",
    "pmp({m, r});", "plotdraws(\"model\" = m);", "x = m.draws;", "print(d.name);",
};

// The extreme values a field may be replaced by.
const std::vector<std::string> kValues = {"0",   "-1",   "-5",  "99",   "1e300", "inf",  "nan", "-0",
                                          "2",   "9.2e18", "1e18", "3.5", "",      "x",    "-1e308"};

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& l : lines) text += l + "\n";
  return text;
}

// One field-wise change: a word of a line replaced by an extreme value, or a line dropped,
// duplicated or swapped with the next.
std::string Mutate(std::vector<std::string> lines, std::mt19937_64& rng) {
  const std::size_t at = 1 + rng() % (lines.size() - 1);  // the header stays
  switch (rng() % 5) {
    case 0:
      lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(at));
      break;
    case 1:
      lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), lines[at]);
      break;
    case 2:
      if (at + 1 < lines.size()) std::swap(lines[at], lines[at + 1]);
      break;
    default: {
      std::istringstream words(lines[at]);
      std::vector<std::string> fields;
      for (std::string w; words >> w;) fields.push_back(w);
      if (fields.empty()) {
        lines[at] = kValues[rng() % kValues.size()];
        break;
      }
      fields[rng() % fields.size()] = kValues[rng() % kValues.size()];
      std::string line;
      for (std::size_t i = 0; i < fields.size(); ++i) line += (i ? " " : "") + fields[i];
      lines[at] = line;
    }
  }
  return Joined(lines);
}

}  // namespace

TEST(WorkspaceFileFuzz, MutatedFilesLoadWholeOrNotAtAll) {
  const fs::path dir = fs::temp_directory_path() / "tavix_workspace_fuzz";
  fs::create_directories(dir);
  const std::string original = (dir / "original.tvw").string();
  {
    const std::string csv = (dir / "d.csv").string();
    std::ofstream(csv) << kDataset;
    Session session;
    RunProgram(session, "d = import(\"" + csv + "\", \",\");" + std::string(kWorkspace) + "save(\"" + original + "\");",
               "\"setup\"", 0);
  }
  std::ifstream in(original, std::ios::binary);
  std::stringstream buffer;
  buffer << in.rdbuf();
  const std::vector<std::string> lines = Lines(buffer.str());
  ASSERT_GT(lines.size(), 50u);

  std::mt19937_64 rng(20261124);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(4);
  const std::string mutated = (dir / "mutated.tvw").string();
  int loads = 0, refusals = 0;
  while (std::chrono::steady_clock::now() < deadline) {
    std::ofstream(mutated, std::ios::binary) << Mutate(lines, rng);
    Session session;
    session.dispatcher = EventDispatcher(std::make_shared<RecordingSink>());
    try {
      RunProgram(session, "load(\"" + mutated + "\");", "\"fuzz\"", 0);
    } catch (const TavixError& error) {
      ++refusals;
      EXPECT_NE(std::string(error.what()).find("the file is not a Tavix workspace or it is damaged."), std::string::npos)
          << error.what();
      const Workspace& ws = session.workspace;
      EXPECT_TRUE(ws.matrices.empty() && ws.datasets.empty() && ws.models.empty() && ws.structures.empty() &&
                  ws.strings.empty());
      continue;
    }
    ++loads;
    for (const std::string& use : kUses) {
      try {
        RunProgram(session, use, "\"use\"", 0);
      } catch (const TavixError&) {
        // a refusal is a fine answer to a strange value
      }
    }
    // Whatever loaded saves again, and loads again.
    const std::string again = (dir / "again.tvw").string();
    EXPECT_NO_THROW(RunProgram(session, "save(\"" + again + "\");", "\"again\"", 0));
    Session reloaded;
    EXPECT_NO_THROW(RunProgram(reloaded, "load(\"" + again + "\");", "\"again\"", 0));
  }
  fs::remove_all(dir);
  EXPECT_GT(loads, 10);
  EXPECT_GT(refusals, 10);
}
