// ScriptStyles: the colouring scanner over script text and the looks of an editor page.
#include "ScriptStyles.h"

#include <wx/font.h>
#include <wx/settings.h>
#include <wx/stc/stc.h>

#include "KeywordTable.h"
#include "Token.h"

namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsOperator(char c) {
  switch (c) {
    case '+': case '-': case '*': case '/': case '^': case '=': case '<': case '>': case '~':
    case '&': case '|': case ',': case ':': case ';': case '(': case ')': case '[': case ']':
    case '{': case '}': case '\'': case '.': case '$': case '!':
      return true;
    default:
      return false;
  }
}

// Walks the text once, filling styles and line-end states.
class Scanner {
public:
  Scanner(std::string_view text, std::vector<char>& styles, std::vector<ScanState>& lineStates)
      : m_text(text), m_styles(styles), m_lineStates(lineStates) {}

  ScanState Run(ScanState state) {
    m_styles.assign(m_text.size(), script_style::kDefault);
    while (m_pos < m_text.size()) {
      switch (state) {
        case ScanState::BlockComment: state = BlockComment(); break;
        case ScanState::String: state = String(); break;
        case ScanState::Code: state = Code(); break;
      }
    }
    return state;
  }

private:
  char At(std::size_t i) const { return i < m_text.size() ? m_text[i] : '\0'; }

  // Styles one byte and moves past it; records the state when the byte ends a line.
  void Take(char style, ScanState stateAfter) {
    m_styles[m_pos] = style;
    const char c = m_text[m_pos];
    ++m_pos;
    if (c == '\n' || (c == '\r' && At(m_pos) != '\n')) m_lineStates.push_back(stateAfter);
  }

  void TakeRun(std::size_t end, char style) {
    while (m_pos < end) Take(style, ScanState::Code);
  }

  // Inside /* ... */ until the closing mark.
  ScanState BlockComment() {
    while (m_pos < m_text.size()) {
      if (m_text[m_pos] == '*' && At(m_pos + 1) == '/') {
        Take(script_style::kBlockComment, ScanState::BlockComment);
        Take(script_style::kBlockComment, ScanState::Code);
        return ScanState::Code;
      }
      Take(script_style::kBlockComment, ScanState::BlockComment);
    }
    return ScanState::BlockComment;
  }

  // Inside a string until its closing quote; a backslash escapes the next character.
  ScanState String() {
    while (m_pos < m_text.size()) {
      const char c = m_text[m_pos];
      if (c == '"') {
        Take(script_style::kString, ScanState::Code);
        return ScanState::Code;
      }
      Take(script_style::kString, ScanState::String);
      if (c == '\\' && m_pos < m_text.size()) Take(script_style::kString, ScanState::String);
    }
    return ScanState::String;
  }

  // The end of an optional exponent starting at `i`, or `i` when there is none.
  std::size_t ExponentEnd(std::size_t i) const {
    if (At(i) != 'e' && At(i) != 'E') return i;
    std::size_t j = i + 1;
    if (At(j) == '+' || At(j) == '-') ++j;
    if (!IsDigit(At(j))) return i;
    while (IsDigit(At(j))) ++j;
    return j;
  }

  // One token of code; numbers follow the interpreter's lexer so that "1." and ".5" colour
  // as it reads them.
  ScanState Code() {
    const char c = m_text[m_pos];
    if (c == '/' && At(m_pos + 1) == '/') {
      std::size_t end = m_pos + 2;
      while (end < m_text.size() && m_text[end] != '\n' && m_text[end] != '\r') ++end;
      TakeRun(end, script_style::kLineComment);
    } else if (c == '/' && At(m_pos + 1) == '*') {
      Take(script_style::kBlockComment, ScanState::BlockComment);
      Take(script_style::kBlockComment, ScanState::BlockComment);
      return ScanState::BlockComment;
    } else if (c == '"') {
      Take(script_style::kString, ScanState::String);
      return ScanState::String;
    } else if (IsLetter(c)) {
      std::size_t end = m_pos + 1;
      while (IsLetter(At(end)) || IsDigit(At(end))) ++end;
      TakeRun(end, WordStyle(m_text.substr(m_pos, end - m_pos)));
    } else if (c == '@' && IsLetter(At(m_pos + 1))) {
      std::size_t end = m_pos + 2;
      while (IsLetter(At(end)) || IsDigit(At(end))) ++end;
      TakeRun(end, script_style::kUserCall);
    } else if (IsDigit(c) || (c == '.' && IsDigit(At(m_pos + 1)))) {
      std::size_t end = m_pos + 1;
      while (IsDigit(At(end))) ++end;
      if (c != '.' && At(end) == '.') {
        ++end;
        while (IsDigit(At(end))) ++end;
      }
      TakeRun(ExponentEnd(end), script_style::kNumber);
    } else {
      Take(IsOperator(c) ? script_style::kOperator : script_style::kDefault, ScanState::Code);
    }
    return ScanState::Code;
  }

  std::string_view m_text;
  std::vector<char>& m_styles;
  std::vector<ScanState>& m_lineStates;
  std::size_t m_pos = 0;
};

wxColour Hex(unsigned rgb) { return wxColour((rgb >> 16) & 0xff, (rgb >> 8) & 0xff, rgb & 0xff); }

}  // namespace

char WordStyle(std::string_view word) {
  switch (KeywordType(word)) {
    case tok::ID:
      return script_style::kDefault;
    case tok::IF: case tok::ELSE: case tok::FOR: case tok::WHILE: case tok::END:
    case tok::FUNCTION: case tok::BTRUEFALSE: case tok::RUN: case tok::EVAL: case tok::PAUSE:
    case tok::QUIT:
      return script_style::kKeyword;
    case tok::INF: case tok::NA: case tok::PI:
      return script_style::kConstant;
    default:
      return script_style::kBuiltin;
  }
}

ScanState StyleScriptText(std::string_view text, ScanState state, std::vector<char>& styles,
                          std::vector<ScanState>& lineStates) {
  lineStates.clear();
  return Scanner(text, styles, lineStates).Run(state);
}

void ApplyScriptStyles(wxStyledTextCtrl& page) {
  const wxFont font(wxFontInfo(10).Family(wxFONTFAMILY_TELETYPE));
  page.StyleSetFont(wxSTC_STYLE_DEFAULT, font);
  page.StyleSetForeground(wxSTC_STYLE_DEFAULT, Hex(0x1e1e1e));
  page.StyleSetBackground(wxSTC_STYLE_DEFAULT, *wxWHITE);
  page.StyleClearAll();

  page.SetLexer(wxSTC_LEX_CONTAINER);
  page.StyleSetForeground(script_style::kLineComment, Hex(0x3f7f3f));
  page.StyleSetItalic(script_style::kLineComment, true);
  page.StyleSetForeground(script_style::kBlockComment, Hex(0x3f7f3f));
  page.StyleSetItalic(script_style::kBlockComment, true);
  page.StyleSetForeground(script_style::kNumber, Hex(0x09805a));
  page.StyleSetForeground(script_style::kString, Hex(0xa31515));
  page.StyleSetForeground(script_style::kKeyword, Hex(0x7a1fa2));
  page.StyleSetBold(script_style::kKeyword, true);
  page.StyleSetForeground(script_style::kBuiltin, Hex(0x1a56b0));
  page.StyleSetForeground(script_style::kOperator, Hex(0x5a5a5a));
  page.StyleSetForeground(script_style::kUserCall, Hex(0x8a5a00));
  page.StyleSetForeground(script_style::kConstant, Hex(0x09805a));
  page.StyleSetBold(script_style::kConstant, true);

  // Matching braces on a pale blue ground; a brace without its partner in red.
  page.StyleSetBackground(wxSTC_STYLE_BRACELIGHT, Hex(0xcfe3ff));
  page.StyleSetBold(wxSTC_STYLE_BRACELIGHT, true);
  page.StyleSetForeground(wxSTC_STYLE_BRACEBAD, *wxWHITE);
  page.StyleSetBackground(wxSTC_STYLE_BRACEBAD, Hex(0xd03030));
  page.StyleSetBold(wxSTC_STYLE_BRACEBAD, true);

  // Line numbers in the first margin; the symbol margin is not used.
  page.StyleSetForeground(wxSTC_STYLE_LINENUMBER, Hex(0x8a8a8a));
  page.StyleSetBackground(wxSTC_STYLE_LINENUMBER, Hex(0xf2f2f2));
  page.SetMarginType(0, wxSTC_MARGIN_NUMBER);
  page.SetMarginWidth(1, 0);
  page.SetMarginWidth(2, 0);
  page.SetMarginLeft(4);

  page.SetCaretLineVisible(true);
  page.SetCaretLineBackground(Hex(0xf4f7fd));
  page.SetSelBackground(true, Hex(0xc5d9f5));
  page.SetIndentationGuides(wxSTC_IV_LOOKBOTH);
  page.StyleSetForeground(wxSTC_STYLE_INDENTGUIDE, Hex(0xd8d8d8));
  page.SetScrollWidthTracking(true);
  page.SetScrollWidth(1);
}

void ColourScript(wxStyledTextCtrl& page, int endPosition) {
  const int firstLine = page.LineFromPosition(page.GetEndStyled());
  const int start = page.PositionFromLine(firstLine);
  // Styling whole lines keeps a word or number from being cut at the requested end.
  const int lastLine = page.LineFromPosition(endPosition);
  const int end = lastLine + 1 < page.GetLineCount() ? page.PositionFromLine(lastLine + 1)
                                                     : page.GetLength();
  if (end <= start) return;

  const wxCharBuffer bytes = page.GetTextRangeRaw(start, end);
  const std::string_view text(bytes.data(), static_cast<std::size_t>(end - start));
  const ScanState initial =
      firstLine > 0 ? static_cast<ScanState>(page.GetLineState(firstLine - 1)) : ScanState::Code;
  std::vector<char> styles;
  std::vector<ScanState> lineStates;
  StyleScriptText(text, initial, styles, lineStates);

  page.StartStyling(start);
  page.SetStyleBytes(static_cast<int>(styles.size()), styles.data());
  for (std::size_t i = 0; i < lineStates.size(); ++i)
    page.SetLineState(firstLine + static_cast<int>(i), static_cast<int>(lineStates[i]));
}
