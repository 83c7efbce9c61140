// SummaryTable: the cells, headers and rows of the tables post-estimation actions print (a name,
// then the mean, standard deviation and 95% interval of a quantity over the draws).
#pragma once

#include <string>

namespace table {

// A number in a column 11 wide ("-" for NaN).
std::string Cell(double x);
// Text left-aligned in `width` columns (one blank after text that fills them).
std::string Padded(const std::string& text, std::size_t width);
// The header line "first Mean Sd 2.5% 97.5%".
std::string Header(const std::string& first, std::size_t width);
std::string Row(const std::string& name, std::size_t width, double mean, double sd, double lower, double upper);
std::string Quoted(const std::string& text);

}  // namespace table
