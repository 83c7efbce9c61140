// The report of a lexer failure.
#pragma once

#include <string>

// "In parsing input NAME" then, for the message "Unexpected character", the end-of-input text;
// any other message is printed as it is.
std::string LexerErrorReport(const std::string& inputName, const std::string& message);
