// StatementsComplete: whether typed text is ready to run.
#pragma once

#include <string>

// Whether `code` holds complete statements: every block closed by "end", every bracket closed,
// the last statement ended by ";" or "end". Text that cannot be read (an unclosed string or
// comment) is not complete. The consoles run typed text only when it is.
bool StatementsComplete(const std::string& code);
