// The summary table of a dataset's variables, as "summary" prints it.
#pragma once

#include <string>
#include <vector>

class Dataset;

// One line per variable: the number of non-missing observations, and their mean, standard
// deviation (n - 1 denominator), minimum and maximum; missing values are left out of each
// statistic. String variables show their number of distinct texts instead.
std::string SummaryTable(const Dataset& dataset, const std::vector<std::string>& variables);

// For a panel: the number of groups and of time periods, and whether every group is observed in
// every period ("balanced"), or how many are not. Empty for other structures.
std::string PanelBalance(const Dataset& dataset);
