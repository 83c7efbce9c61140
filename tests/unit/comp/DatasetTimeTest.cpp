// Dataset structures and the operations along time: formats, lags and differences matched by
// time within groups on unsorted data with gaps, and group statistics.
#include <gtest/gtest.h>

#include <cmath>

#include "Dataset.h"

namespace {

bool Same(const Eigen::VectorXd& a, std::initializer_list<double> b) {
  if (a.size() != static_cast<Eigen::Index>(b.size())) return false;
  Eigen::Index i = 0;
  for (double x : b) {
    const double y = a(i++);
    if (std::isnan(x) != std::isnan(y) || (!std::isnan(x) && x != y)) return false;
  }
  return true;
}

const double NA = std::nan("");

}  // namespace

TEST(DatasetTime, LagsFollowTimeWithinGroupsWhateverTheRowOrder) {
  // Firm 2's rows come first and out of order; firm 1 has no observation in 2002.
  Eigen::MatrixXd data(6, 3);
  data << 2, 2003, 26,  //
      1, 2003, 15,      //
      2, 2001, 20,      //
      1, 2001, 10,      //
      2, 2002, 23,      //
      1, 2004, 18;
  Dataset d({"firm", "year", "y"}, data);
  Eigen::VectorXd out;
  EXPECT_NE(d.TakeLags("y", 1, out), "");  // a cross-section has no time
  ASSERT_EQ(d.SetPanelData("year", "firm", TimeFormat::Index), "");
  ASSERT_EQ(d.TakeLags("y", 1, out), "");
  EXPECT_TRUE(Same(out, {23, NA, NA, NA, 20, 15}));
  ASSERT_EQ(d.TakeLags("y", -1, out), "");  // leads
  EXPECT_TRUE(Same(out, {NA, 18, 23, NA, 26, NA}));
  ASSERT_EQ(d.TakeDiffs("y", 1, 0, out), "");
  EXPECT_TRUE(Same(out, {3, NA, NA, NA, 3, 3}));
  ASSERT_EQ(d.TakeDiffs("y", 2, 0, out), "");
  EXPECT_TRUE(Same(out, {0, NA, NA, NA, NA, NA}));
  ASSERT_EQ(d.TakeDiffs("y", 0, 2, out), "");  // seasonal difference of period 2
  EXPECT_TRUE(Same(out, {6, 5, NA, NA, NA, NA}));
  ASSERT_EQ(d.CalculateGroupStats("y", "means", out), "");
  EXPECT_TRUE(Same(out, {23, 43.0 / 3, 23, 43.0 / 3, 23, 43.0 / 3}));
  ASSERT_EQ(d.CalculateGroupStats("y", "counts", out), "");
  EXPECT_TRUE(Same(out, {3, 3, 3, 3, 3, 3}));
}

TEST(DatasetTime, FormatsAreValidated) {
  Dataset d;
  d.AddStringVariable("q", {"2001q4", "2002q1", "2002q2"});
  d.AddVariable("v", Eigen::Vector3d(1, 2, 4));
  ASSERT_EQ(d.SetTimeSeries("q", TimeFormat::Quarterly), "");
  Eigen::VectorXd out;
  ASSERT_EQ(d.TakeDiffs("v", 1, 0, out), "");  // 2001q4 and 2002q1 are consecutive
  EXPECT_TRUE(Same(out, {NA, 1, 2}));
  EXPECT_NE(d.SetTimeSeries("q", TimeFormat::Monthly), "");
  EXPECT_EQ(d.Structure().format, TimeFormat::Quarterly);  // a refusal leaves it as it was
  Dataset days;
  days.AddStringVariable("day", {"2024/02/28", "2024/02/29", "2024/03/01"});
  days.AddVariable("v", Eigen::Vector3d(1, 2, 3));
  ASSERT_EQ(days.SetTimeSeries("day", TimeFormat::Daily), "");
  ASSERT_EQ(days.TakeLags("v", 1, out), "");
  EXPECT_TRUE(Same(out, {NA, 1, 2}));  // the leap day makes the three days consecutive
  Dataset bad;
  bad.AddStringVariable("day", {"2023/02/29"});
  EXPECT_NE(bad.SetTimeSeries("day", TimeFormat::Daily), "");
  // Index times that a double no longer counts exactly are refused, also when the structure was
  // declared before they were written.
  Dataset huge({"t"}, Eigen::Vector2d(-1e300, 2));
  EXPECT_EQ(huge.SetTimeSeries("t", TimeFormat::Index),
            "The values of the time variable \"t\" must be integers between -9007199254740992 and "
            "9007199254740992 for the \"index\" format.");
  huge.RestoreStructure({DatasetKind::TimeSeries, "t", "", TimeFormat::Index});
  EXPECT_NE(huge.TakeLags("t", 1, out), "");
  Dataset edge({"t"}, Eigen::Vector2d(-9007199254740992.0, 9007199254740992.0));
  EXPECT_EQ(edge.SetTimeSeries("t", TimeFormat::Index), "");
  Dataset repeated({"t"}, Eigen::Vector2d(1, 1));
  EXPECT_NE(repeated.SetTimeSeries("t", TimeFormat::Index), "");
  EXPECT_EQ(TimeFormatFromName("yyyymxx"), TimeFormat::Monthly);
  EXPECT_FALSE(TimeFormatFromName("weekly").has_value());
}
