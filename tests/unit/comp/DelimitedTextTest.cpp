// Reading delimited text into datasets: quoting, line ends, missing values, strings, names.
#include <gtest/gtest.h>

#include <cmath>

#include "Dataset.h"
#include "DelimitedText.h"

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
  EXPECT_NE(ReadDelimited("a,b\n1,2\n3\n", ',').error, "");
  EXPECT_NE(ReadDelimited("a,b\n1,2,3\n", ',').error, "");
  // A wrong delimiter gives one column rather than an error; the caller warns about it.
  const DelimitedImport r = ReadDelimited("a;b\n1;2\n", ',');
  EXPECT_EQ(r.error, "");
  EXPECT_EQ(r.dataset->NumberOfVariables(), 1);
  EXPECT_TRUE(r.dataset->IsStringVariable("a_b"));
}
