// The time formats of time series and panels, read into whole-number time indices.
#pragma once

#include <optional>
#include <string>

enum class TimeFormat { Index, Quarterly, Monthly, Daily };

// The format named as users type it: "index", "yyyyqx", "yyyymxx" or "yyyy/mm/dd".
std::optional<TimeFormat> TimeFormatFromName(const std::string& name);
const char* TimeFormatName(TimeFormat format);

// The time index of a text in a dated format, consecutive within the format: year * 4 + quarter
// for "2001q3", year * 12 + month for "2001m07", days since 1970-01-01 for "2001/07/31"; nothing
// when the text is not a valid date of that format.
std::optional<long long> ParseTimeText(TimeFormat format, const std::string& text);
