// Workspace files mutated field by field: every load either fails with the damaged-file message
// and leaves the workspace empty, or gives values that every statement can use without reading
// out of bounds, that save writes again and that load reads back to the same file (run under the
// sanitizers in CI).
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "Dataset.h"
#include "Interpreter.h"
#include "Model.h"
#include "RecordingSink.h"
#include "TavixError.h"

namespace fs = std::filesystem;

namespace {

// Every kind of value: matrices (an empty one, extreme numbers), a string, a panel and a time
// series with string variables, nested structures holding a model, and models of every class of
// the linear family (several chains, thinning, a second list, individual effects).
const char* kWorkspace = R"(
d = import("d.csv", ",");
d.y = 2 * d.x + 1;
d.y(2) = 4;
set_pd(t, g, "dataset" = d);
q = import("d.csv", ",");
set_ts(quarter, "format" = "yyyyqx", "dataset" = q);
a = [1 2; 3 4];
e = [];
x = [1e300 -inf nan; -0 4.9e-324 1];
s = "text";
st.inner.m = [1; 2];
st.inner.txt = "deep";
st.n = 3;
m = lm(y ~ constant x, "draws" = 20, "burnin" = 5, "chains" = 2, "dataset" = d);
h = lm(y ~ constant x | constant w, "draws" = 30, "burnin" = 5, "chains" = 3, "thin" = 2, "dataset" = d);
r = lm_re(y ~ constant x, "draws" = 20, "burnin" = 5, "dataset" = d);
st.model = m;
)";

const char* kDataset = "g,t,x,w,name,quarter\n1,1,0.5,1,York,2001q1\n1,2,1.5,2,Leeds,2001q2\n"
                       "2,1,2.0,1,York,2001q3\n2,2,3.5,3,Hull,2001q4\n3,1,4.0,2,\"Hull, East\",2002q1\n"
                       "3,2,5.5,1,Leeds,2002q2\n";

// What a field may be replaced by.
const std::vector<std::string> kValues = {"0",      "-1",    "-5",   "99",   "1e300", "inf",  "-inf", "nan",
                                          "-0",     "2",     "3.5",  "",     "x",     "y",    "tau",  "print",
                                          "9.2e18", "9223372036854775807", "18446744073709551616",
                                          "1000000000000000000", "4.9e-324", "1e-300", "-1e308"};

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& l : lines) {
    text += l;
    text += '\n';
  }
  return text;
}

std::string ReadAll(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::stringstream buffer;
  buffer << in.rdbuf();
  return buffer.str();
}

// The lines of a file grouped by their form (a count, a size, a row of n numbers, a name, ...), so
// that rare records (a dataset's rows, a model's settings) are changed as often as the many rows
// of draws.
std::vector<std::vector<std::size_t>> LinesByForm(const std::vector<std::string>& lines) {
  std::map<std::string, std::vector<std::size_t>> forms;
  for (std::size_t at = 1; at < lines.size(); ++at) {
    const std::string& line = lines[at];
    int count = 0;
    bool numbers = true, whole = true;
    for (std::size_t i = 0; i < line.size();) {
      const std::size_t end = std::min(line.find(' ', i), line.size());
      if (end > i) {
        const std::string word = line.substr(i, end - i);
        char* stop = nullptr;
        std::strtod(word.c_str(), &stop);
        numbers = numbers && *stop == '\0';
        whole = whole && word.find_first_not_of("0123456789") == std::string::npos;
        ++count;
      }
      i = end + 1;
    }
    forms[(numbers ? (whole ? "whole " : "numbers ") : "words ") + std::to_string(count)].push_back(at);
  }
  std::vector<std::vector<std::size_t>> groups;
  for (auto& [form, at] : forms) groups.push_back(std::move(at));
  return groups;
}

// Where texts are: the index of each text's length line, followed by its line (texts of one line)
// and the end marker.
std::vector<std::size_t> Texts(const std::vector<std::string>& lines) {
  std::vector<std::size_t> texts;
  for (std::size_t j = 2; j < lines.size(); ++j) {
    if (lines[j] == "_#_end_of_string_#_" && lines[j - 2] == std::to_string(lines[j - 1].size())) texts.push_back(j - 2);
  }
  return texts;
}

// Texts a text may become, its length kept right: class names, keywords, labels, names.
const std::vector<std::string> kTexts = {"LM",    "LM_RE", "LM_HET", "PROBIT", "lm", "lm_re", "tau", "omega",
                                         "y$x",   "y$constant", "x", "y", "w", "name", "constant", "",
                                         "print", "1x",    "d",      "q",      "t",  "g",     "quarter"};

// One change to a file (the header stays; `forms` are its lines by form): a text replaced by another, a field replaced by an
// extreme value, a whole number moved by one or doubled, a line or a run of lines dropped or
// repeated, two lines swapped.
void Mutate(std::vector<std::string>& lines, const std::vector<std::vector<std::size_t>>& forms,
            std::mt19937_64& rng) {
  const int op = static_cast<int>(rng() % 10);
  if (op >= 8) {
    // A text chosen by its value (a class name is as likely as one of the many labels), becoming a
    // text of the list or another of the file.
    std::map<std::string, std::vector<std::size_t>> byValue;
    for (std::size_t at : Texts(lines)) byValue[lines[at + 1]].push_back(at);
    if (byValue.empty()) return;
    auto value = byValue.begin();
    std::advance(value, static_cast<std::ptrdiff_t>(rng() % byValue.size()));
    const std::size_t at = value->second[rng() % value->second.size()];
    auto other = byValue.begin();
    std::advance(other, static_cast<std::ptrdiff_t>(rng() % byValue.size()));
    const std::string text = rng() % 2 ? kTexts[rng() % kTexts.size()] : other->first;
    lines[at] = std::to_string(text.size());
    lines[at + 1] = text;
    return;
  }
  // The forms are those of the file before any change: after one, a line near the chosen one.
  const std::vector<std::size_t>& form = forms[rng() % forms.size()];
  const std::size_t at = std::min(form[rng() % form.size()], lines.size() - 1);
  if (at == 0) return;
  const auto it = lines.begin() + static_cast<std::ptrdiff_t>(at);
  const std::size_t run = 2 + rng() % 8;
  const auto runEnd = lines.begin() + static_cast<std::ptrdiff_t>(std::min(lines.size(), at + run));
  switch (op) {
    case 0: lines.erase(it); return;
    case 1: lines.insert(it, *it); return;
    case 2: lines.erase(it, runEnd); return;
    case 3: {
      const std::vector<std::string> copy(it, runEnd);
      lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), copy.begin(), copy.end());
      return;
    }
    case 4:
      if (at + 1 < lines.size()) std::swap(lines[at], lines[at + 1]);
      return;
    default: break;
  }
  std::istringstream words(lines[at]);
  std::vector<std::string> fields;
  for (std::string w; words >> w;) fields.push_back(w);
  if (fields.empty()) {
    lines[at] = kValues[rng() % kValues.size()];
    return;
  }
  std::string& field = fields[rng() % fields.size()];
  long long whole = 0;
  std::istringstream number(field);
  if (rng() % 2 == 0 && number >> whole && number.eof()) {
    const long long changes[] = {whole + 1, whole - 1, whole * 2, whole + 1000};
    field = std::to_string(changes[rng() % 4]);
  } else {
    field = kValues[rng() % kValues.size()];
  }
  std::string line;
  for (std::size_t i = 0; i < fields.size(); ++i) line += (i ? " " : "") + fields[i];
  lines[at] = line;
}

// Statements that use each loaded value the way users do, one program each (errors allowed).
std::vector<std::string> Uses(const Workspace& ws) {
  std::vector<std::string> uses = {"who;"};
  for (const std::string& name : ws.Names()) uses.push_back("print(" + name + ");");
  for (const auto& [name, d] : ws.datasets) {
    const std::string option = ", \"dataset\" = " + name + ");";
    uses.push_back("summary(\"dataset\" = " + name + ");");
    const std::vector<std::string>& variables = d->VariableNames();
    if (variables.size() > 1) uses.push_back("sortd({" + variables.back() + ", " + variables.front() + "}" + option);
    for (const std::string& v : variables) {
      uses.push_back("sortd({" + v + "}" + option);
      uses.push_back("z = lag(" + v + ", 1" + option);
      uses.push_back("z = diff(" + v + ", 1, 2" + option);
      uses.push_back("z = groupmeans(" + v + option);
    }
  }
  for (const auto& [name, m] : ws.models) {
    const std::string option = "\"model\" = " + name + ");";
    for (const std::string& use :
         {"diagnostics(" + option, "mfx(" + option, "mfx(\"point\" = \"median\", " + option,
          "predict(\"type\" = 2, " + option, "predict(\"prefix\" = p, \"stats\" = true, " + option,
          "store(effects, " + option, "store(fitted, " + option, "test(y$x > 0, " + option,
          "pmp({" + name + "});", "z = " + name + ".draws;", "print(" + name + ".post_mean);"}) {
      uses.push_back(use);
    }
  }
  uses.push_back("print(st.inner.m);");
  uses.push_back("print(st.model);");
  return uses;
}

bool WorkspaceEmpty(const Workspace& ws) {
  return ws.matrices.empty() && ws.datasets.empty() && ws.models.empty() && ws.structures.empty() &&
         ws.strings.empty();
}

}  // namespace

TEST(WorkspaceFileFuzz, MutatedFilesLoadWholeOrNotAtAll) {
  // Every save flushes its file to disk: in memory where the system offers it, so that more files
  // are tried in the time.
  std::error_code error;
  const fs::path base = fs::is_directory("/dev/shm", error) ? fs::path("/dev/shm") : fs::temp_directory_path();
  const fs::path dir = base / ("tavix_workspace_fuzz_" + std::to_string(::getpid()));
  fs::remove_all(dir);
  fs::create_directories(dir);
  const auto quoted = [](const fs::path& p) { return "\"" + p.string() + "\""; };
  {
    std::ofstream(dir / "d.csv") << kDataset;
    Session session;
    session.dispatcher = EventDispatcher(std::make_shared<RecordingSink>());
    const std::string setup = kWorkspace;
    std::string script;
    // The dataset is read from the test's own directory.
    for (const std::string& line : Lines(setup)) {
      const auto at = line.find("\"d.csv\"");
      script += at == std::string::npos ? line : line.substr(0, at) + quoted(dir / "d.csv") + line.substr(at + 7);
      script += "\n";
    }
    ASSERT_NO_THROW(RunProgram(session, script + "save(" + quoted(dir / "original.tvw") + ");", "\"setup\"", 0));
  }
  const std::vector<std::string> lines = Lines(ReadAll(dir / "original.tvw"));
  ASSERT_GT(lines.size(), 500u);
  const std::vector<std::vector<std::size_t>> forms = LinesByForm(lines);

  const fs::path mutated = dir / "mutated.tvw", again = dir / "again.tvw", twice = dir / "twice.tvw";
  int loads = 0, refusals = 0;
  // One damaged file: refused whole with the damaged-file message, or loaded into values that
  // statements use, that save writes, and whose file loads and saves again to the same file.
  const auto attempt = [&](const std::string& text) {
    std::ofstream(mutated, std::ios::binary) << text;
    Session session;
    session.dispatcher = EventDispatcher(std::make_shared<RecordingSink>());
    try {
      RunProgram(session, "load(" + quoted(mutated) + ");", "\"fuzz\"", 0);
    } catch (const TavixError& error) {
      ++refusals;
      EXPECT_NE(std::string(error.what()).find("cannot be opened for reading: the file is not a Tavix workspace or it is damaged."),
                std::string::npos)
          << error.what();
      EXPECT_TRUE(WorkspaceEmpty(session.workspace));
      return;
    }
    ++loads;
    ASSERT_NO_THROW(RunProgram(session, "save(" + quoted(again) + ");", "\"again\"", 0)) << text;
    for (const std::string& use : Uses(session.workspace)) {
      try {
        RunProgram(session, use, "\"use\"", 0);
      } catch (const TavixError&) {
        // a refusal is a fine answer to a strange value
      }
    }
    EXPECT_NO_THROW(RunProgram(session, "save(" + quoted(twice) + ");", "\"after use\"", 0));
    Session reloaded;
    reloaded.dispatcher = EventDispatcher(std::make_shared<RecordingSink>());
    ASSERT_NO_THROW(RunProgram(reloaded, "load(" + quoted(again) + "); save(" + quoted(twice) + ");", "\"again\"", 0))
        << text;
    EXPECT_EQ(ReadAll(twice), ReadAll(again)) << text;
  };

  // First every model's class and keyword turned into every other's: the class then reads the
  // draws as its own, so its description must agree with them.
  const std::vector<std::string> classWords = {"LM", "LM_HET", "LM_RE", "lm", "lm_re"};
  for (std::size_t at : Texts(lines)) {
    if (std::find(classWords.begin(), classWords.end(), lines[at + 1]) == classWords.end()) continue;
    for (const std::string& word : classWords) {
      std::vector<std::string> changed = lines;
      changed[at] = std::to_string(word.size());
      changed[at + 1] = word;
      SCOPED_TRACE("line " + std::to_string(at + 2) + " becomes " + word);
      attempt(Joined(changed));
    }
  }

  // Then random changes, one or a few on top of each other, for a few seconds. The seed differs
  // from run to run (TAVIX_FUZZ_SEED repeats one).
  const char* given = std::getenv("TAVIX_FUZZ_SEED");
  const std::uint64_t seed = given ? std::strtoull(given, nullptr, 10) : std::random_device{}();
  SCOPED_TRACE("TAVIX_FUZZ_SEED=" + std::to_string(seed));
  std::mt19937_64 rng(seed);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  for (int trial = 0; trial < 20 || std::chrono::steady_clock::now() < deadline; ++trial) {
    std::vector<std::string> changed = lines;
    for (int n = 1 + static_cast<int>(rng() % 3 == 0) * static_cast<int>(1 + rng() % 2); n > 0; --n) {
      Mutate(changed, forms, rng);
    }
    SCOPED_TRACE("trial " + std::to_string(trial));
    attempt(Joined(changed));
  }
  fs::remove_all(dir);
  EXPECT_GT(loads, 0);
  EXPECT_GT(refusals, 0);
}
