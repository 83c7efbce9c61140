// Listings of the workspace and of structures, as `who` prints them and the panes show them.
#pragma once

#include <string>

#include "TavixValue.h"

class Workspace;
class TavixStructure;

// A short description of a value: "3x2" for a matrix, "120 observations, 4 variables,
// cross-section" for a dataset (or its time series or panel structure), the family of a model, the number of members of a structure, the length of a string.
std::string DescribeValue(const TavixValue& value);

// The names of the workspace grouped by kind (matrices, datasets, models, structures, strings),
// each with its description; "The workspace is empty.\n" when there is nothing.
std::string ListWorkspace(const Workspace& workspace);

// The members of the structure `name`, grouped by kind in the same way.
std::string ListStructure(const std::string& name, const TavixStructure& structure);
