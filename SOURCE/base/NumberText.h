// NumberText: decimal text to double, the same way everywhere numbers are read (script literals,
// imported files, workspace files), independent of the locale.
#pragma once

#include <string_view>

// Reads the whole of `text` as a decimal number ("12", "-0.5", "1e-3", "+7"); false when it is not
// one. Values too large for a double give an infinity of their sign, values too small a zero of
// their sign, however many digits the text has. "inf" and "nan" (any case) read as themselves.
bool TextToDouble(std::string_view text, double& out);
