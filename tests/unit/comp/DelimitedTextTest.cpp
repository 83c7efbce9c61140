// Reading delimited text into datasets: quoting, line ends, missing values, strings, names.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <set>

#include "Dataset.h"
#include "DelimitedText.h"
#include "RandomEngine.h"

TEST(DelimitedText, NumbersMissingValuesAndLineEnds) {
  const DelimitedImport r = ReadDelimited("\xEF\xBB\xBFy,x\r\n1.5,2\r\n,NA\r\n-3e2,.\r\n4,nan\r\n\r\n", ',');
  ASSERT_EQ(r.error, "");
  const Dataset& d = *r.dataset;
  EXPECT_EQ(d.VariableNames(), (std::vector<std::string>{"y", "x"}));
  ASSERT_EQ(d.NumberOfObservations(), 4);
  EXPECT_EQ(d.Data()(0, 0), 1.5);
  EXPECT_EQ(d.Data()(2, 0), -300.0);
  EXPECT_TRUE(std::isnan(d.Data()(1, 0)));
  for (int row = 1; row < 4; ++row) EXPECT_TRUE(std::isnan(d.Data()(row, 1))) << row;
  EXPECT_FALSE(d.HasStringVariables());

  // Out of range: infinities of their sign above the largest double, zeros of their sign below
  // the smallest.
  const DelimitedImport range = ReadDelimited("a,b,c,d,e\n1e-400,-1e-400,1e400,-1e400,4.9e-324\n", ',');
  ASSERT_EQ(range.error, "");
  const Eigen::MatrixXd& x = range.dataset->Data();
  EXPECT_EQ(x(0, 0), 0.0);
  EXPECT_FALSE(std::signbit(x(0, 0)));
  EXPECT_EQ(x(0, 1), 0.0);
  EXPECT_TRUE(std::signbit(x(0, 1)));
  EXPECT_EQ(x(0, 2), std::numeric_limits<double>::infinity());
  EXPECT_EQ(x(0, 3), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(x(0, 4), std::numeric_limits<double>::denorm_min());
}

TEST(DelimitedText, QuotedFieldsAndStringColumns) {
  const DelimitedImport r = ReadDelimited(
      "name;note;v\n\"Smith; J\";\"said \"\"hi\"\"\nand left\";1\nYork;;2\n\"Smith; J\";x;3\n", ';');
  ASSERT_EQ(r.error, "");
  const Dataset& d = *r.dataset;
  ASSERT_EQ(d.NumberOfObservations(), 3);
  EXPECT_TRUE(d.IsStringVariable("name"));
  EXPECT_EQ(d.StringValue("name", 0), "Smith; J");
  EXPECT_EQ(d.StringValue("name", 1), "York");
  EXPECT_EQ(d.Data()(2, 0), d.Data()(0, 0));  // the same text has the same code
  EXPECT_EQ(d.StringValue("note", 0), "said \"hi\"\nand left");
  EXPECT_TRUE(std::isnan(d.Data()(1, 1)));  // an empty cell of a string column is missing
  EXPECT_FALSE(d.IsStringVariable("v"));
  EXPECT_EQ(d.GetVariable("v"), Eigen::Vector3d(1, 2, 3));
}

TEST(DelimitedText, NamesBecomeDistinctIdentifiers) {
  const DelimitedImport r = ReadDelimited("first name\t2x\tv\tv\t\n1\t2\t3\t4\t5\n", '\t');
  ASSERT_EQ(r.error, "");
  EXPECT_EQ(r.dataset->VariableNames(),
            (std::vector<std::string>{"first_name", "_2x", "v", "v_2", "_V5"}));
  EXPECT_EQ(r.renamed.size(), 4u);
}

TEST(DelimitedText, RaggedLinesAreRefused) {
  EXPECT_EQ(ReadDelimited("a,b\n1,2\n3\n", ',').error, "line 3 has 1 fields where the header has 2.");
  EXPECT_EQ(ReadDelimited("a,b\n1,2\n\n4,5,6\n", ',').error, "line 4 has 3 fields where the header has 2.");
  // A quote never closed, here in the last column, is named by the line it starts on.
  EXPECT_EQ(ReadDelimited("a,b\n1,\"x\n2,y\n3,z\n", ',').error,
            "the quoted field that starts on line 2 is never closed.");
  // Also in the header, and with lines ended by a lone CR.
  EXPECT_EQ(ReadDelimited("a,\"b\n1,2\n", ',').error, "the quoted field that starts on line 1 is never closed.");
  EXPECT_EQ(ReadDelimited("a,b\r\r1,2\r3,4,5\r", ',').error, "line 4 has 3 fields where the header has 2.");
  // Text after a closing quote would be lost: refused; blanks there are not.
  EXPECT_EQ(ReadDelimited("a,b\n1,\"x\"y\n", ',').error,
            "the quoted field that starts on line 2 has text after its closing quote.");
  EXPECT_EQ(ReadDelimited("a,\"b\"c\n1,2\n", ',').error,
            "the quoted field that starts on line 1 has text after its closing quote.");
  const DelimitedImport blanks = ReadDelimited("a,b\n1,\"x\"  \n", ',');
  ASSERT_EQ(blanks.error, "");
  EXPECT_EQ(blanks.dataset->StringValue("b", 0), "x");
  // A wrong delimiter gives one column rather than an error; the caller warns about it.
  const DelimitedImport r = ReadDelimited("a;b\n1;2\n", ',');
  EXPECT_EQ(r.error, "");
  EXPECT_EQ(r.dataset->NumberOfVariables(), 1);
  EXPECT_TRUE(r.dataset->IsStringVariable("a_b"));
}

// Words of the language are renamed like other names that cannot be variables.
TEST(DelimitedText, ReservedWordsAreRenamed) {
  const std::set<std::string> words = {"if", "end", "pi", "lm"};
  const ReservedWord reserved = [&](const std::string& w) { return words.count(w) > 0; };
  const DelimitedImport r = ReadDelimited("if,lm,end,pi,x\n1,2,3,4,5\n", ',', reserved);
  ASSERT_EQ(r.error, "");
  EXPECT_EQ(r.dataset->VariableNames(), (std::vector<std::string>{"if_", "lm_", "end_", "pi_", "x"}));
  EXPECT_EQ(r.renamed.size(), 4u);
}

namespace {

bool SameNumber(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

}  // namespace

// Random datasets of numeric and string variables through export and import come back the same:
// numbers bit for bit (signed zeros, infinities, missing values), texts as written, whatever they
// look like; one-variable datasets with missing values included.
TEST(DelimitedText, ExportThenImportGivesTheSameDataset) {
  RandomEngine rng;
  rng.Seed(77);
  const std::vector<std::string> awkward = {"NA", ".", "nan", "NaN", "", "007", "12", "-3.5e2", " lead", "trail ",
                                            "a,b", "a;b", "a\tb", "say \"hi\"", "\"", "line\nbreak", "cr\rlf",
                                            "inf", "x", "\xC3\xA9t\xC3\xA9", "  ", "1e400"};
  const double specials[] = {0.0, -0.0, std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN(),
                             4.9e-324, 1.7976931348623157e308, 0.1, 1.0 / 3.0};
  for (int trial = 0; trial < 400; ++trial) {
    const int variables = 1 + static_cast<int>(rng.Uniform() * 4);
    const int rows = static_cast<int>(rng.Uniform() * 6);
    std::vector<std::string> names;
    for (int j = 0; j < variables; ++j) names.push_back("v" + std::to_string(j));
    Eigen::MatrixXd data(rows, variables);
    for (Eigen::Index i = 0; i < data.size(); ++i) {
      const double u = rng.Uniform();
      data.data()[i] = u < 0.4 ? specials[static_cast<int>(rng.Uniform() * 9)] : std::ldexp(rng.Normal(), static_cast<int>(rng.Normal() * 40));
    }
    Dataset d(names, data);
    for (int j = 0; j < variables; ++j) {
      if (rng.Uniform() < 0.5) continue;
      std::vector<std::string> texts;
      for (int i = 0; i < rows; ++i) {
        if (rng.Uniform() < 0.5) {
          texts.push_back(awkward[static_cast<std::size_t>(rng.Uniform() * static_cast<double>(awkward.size()))]);
          continue;
        }
        // Short texts of the characters that matter to the format: digits and signs that may
        // make numbers, blanks, delimiters, quotes, line breaks, letters of "NA", "nan", "inf".
        static const std::string alphabet = "01.e-+ \t,;\"\n\rNAnaif";
        std::string text;
        for (int k = static_cast<int>(rng.Uniform() * 6); k > 0; --k) {
          text += alphabet[static_cast<std::size_t>(rng.Uniform() * static_cast<double>(alphabet.size()))];
        }
        texts.push_back(text);
      }
      d.SetStringVariable(names[static_cast<std::size_t>(j)], texts);
    }
    for (char delimiter : {',', ';', '\t'}) {
      const std::string text = WriteDelimited(d, delimiter);
      const DelimitedImport back = ReadDelimited(text, delimiter);
      ASSERT_EQ(back.error, "") << text;
      const Dataset& e = *back.dataset;
      ASSERT_EQ(e.VariableNames(), names) << text;
      ASSERT_EQ(e.NumberOfObservations(), rows) << text;
      for (const std::string& name : names) {
        // A string variable whose texts are all missing comes back as one of missing texts too.
        ASSERT_EQ(e.IsStringVariable(name), d.IsStringVariable(name) && rows > 0) << name << "\n" << text;
        for (Eigen::Index i = 0; i < rows; ++i) {
          if (d.IsStringVariable(name)) {
            EXPECT_EQ(e.StringValue(name, i), d.StringValue(name, i)) << name << " " << i << "\n" << text;
          } else {
            EXPECT_TRUE(SameNumber(e.GetVariable(name)(i), d.GetVariable(name)(i)))
                << name << " " << i << ": " << d.GetVariable(name)(i) << "\n" << text;
          }
        }
      }
    }
  }
}

// A matrix of one column never writes an empty line, which a reader would skip; numbers come
// back bit for bit.
TEST(DelimitedText, MatrixColumnsKeepEveryRow) {
  Eigen::MatrixXd m(5, 1);
  m << 0.1, std::numeric_limits<double>::quiet_NaN(), 1.0 / 3.0, -0.0, std::numeric_limits<double>::quiet_NaN();
  const std::string text = WriteDelimited(m, ',');
  EXPECT_EQ(text.find("\n\n"), std::string::npos) << text;
  const DelimitedImport back = ReadDelimited("x\n" + text, ',');
  ASSERT_EQ(back.error, "");
  ASSERT_EQ(back.dataset->NumberOfObservations(), 5);
  for (Eigen::Index i = 0; i < 5; ++i) EXPECT_TRUE(SameNumber(back.dataset->Data()(i, 0), m(i, 0))) << i;
}
