// ScriptStyles: syntax colouring of scripts: a scanner that gives each byte its style, and the
// fonts and colours of an editor page.
#pragma once

#include <string_view>
#include <vector>

class wxStyledTextCtrl;

// The style numbers the scanner gives; each has its colour on a page.
namespace script_style {
enum : char {
  kDefault = 0,
  kLineComment = 1,
  kBlockComment = 2,
  kNumber = 3,
  kString = 4,
  kKeyword = 5,   // control words: if, else, for, while, end, function, true, false, ...
  kBuiltin = 6,   // the other words of the language: print, mean, lm, ...
  kOperator = 7,  // operators, brackets and punctuation
  kUserCall = 8,  // a call of a user function: @name
  kConstant = 9,  // inf, nan, pi
};
}  // namespace script_style

// What the scanner is inside of at the end of a line: block comments and strings may go on
// over several lines.
enum class ScanState : int { Code = 0, BlockComment = 1, String = 2 };

// Gives each byte of the UTF-8 `text` its style in `styles` (resized to the text's length),
// starting in `state`. `lineStates` receives the state after each line ending in `text` ("\n",
// "\r\n" or a lone "\r"), in order. Returns the state at the end of the text.
ScanState StyleScriptText(std::string_view text, ScanState state, std::vector<char>& styles,
                          std::vector<ScanState>& lineStates);

// The style of a word of letters, digits and underscores: keyword, built-in, constant or default.
char WordStyle(std::string_view word);

// Sets a page's font, colours, margins and the other looks of the editor, and selects the
// container lexer so that ColourScript does the colouring.
void ApplyScriptStyles(wxStyledTextCtrl& page);

// Colours the page from the first line not yet styled to the end of the line holding
// `endPosition`; call it from the page's style-needed event.
void ColourScript(wxStyledTextCtrl& page, int endPosition);
