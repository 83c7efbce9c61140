// Running print: matrices, datasets, models and strings, with the optional colour.
#include <cmath>

#include "AstStatements.h"
#include "Dataset.h"
#include "ExecContext.h"
#include "MatrixFormat.h"
#include "Messages.h"
#include "Model.h"
#include "ValueKind.h"

namespace {

// The escape pairs a printed string turns into characters, replaced one pair after the other in
// this order, as each pass sees the result of the one before.
std::string Unescape(std::string text) {
  static const std::pair<char, char> kPairs[] = {
      {'t', '\t'}, {'n', '\n'}, {'r', '\r'}, {'"', '"'}, {'\'', '\''}};
  for (const auto& [letter, character] : kPairs) {
    std::string next;
    next.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == letter) {
        next += character;
        ++i;
      } else {
        next += text[i];
      }
    }
    text = std::move(next);
  }
  return text;
}

// "\nTEXT =\n" then the matrix, or " [ ]" when it is empty.
void PrintMatrixWithHeading(const ExecContext& context, const std::string& heading,
                            const Eigen::MatrixXd& matrix) {
  const EventDispatcher& out = context.dispatcher();
  out.Print("\n" + heading + " =\n");
  if (matrix.rows() >= 1 && matrix.cols() >= 1) {
    out.Print(FormatMatrix(matrix));
  } else {
    out.Print(" [ ]\n\n");
  }
}

}  // namespace

void PrintStatement::Execute(ExecContext& context) const {
  const TavixValue shown = value->Evaluate(context);
  std::optional<Colour> rgb;
  if (colour) {
    const TavixValue c = colour->Evaluate(context);
    const bool valid = c.code == kind::MATRIX && c.matrix->rows() == 1 && c.matrix->cols() == 3 &&
                       c.matrix->minCoeff() >= 0.0 && c.matrix->maxCoeff() <= 1.0;
    if (!valid) context.Fail(*this, msg::kPrintColour);
    const auto& m = *c.matrix;
    rgb = Colour{static_cast<std::uint8_t>(m(0) * 255), static_cast<std::uint8_t>(m(1) * 255),
                 static_cast<std::uint8_t>(m(2) * 255)};
  }
  const std::string heading = context.stream().Text(value->first, value->last);
  auto colourIgnored = [&](const char* what) {
    if (rgb) {
      context.Warn(*this, std::string("Tavix cannot print ") + what +
                              " in colour. The second argument passed to \"print\" is ignored.");
    }
  };
  switch (shown.code) {
    case kind::MATRIX:
      PrintMatrixWithHeading(context, heading, *shown.matrix);
      colourIgnored("matrices");
      break;
    case kind::DATASET:
      if (shown.dataset->HasStringVariables()) {
        context.Warn(*this, "Dataset \"" + heading +
                                "\" contains string variables and the values of its variables "
                                "cannot be printed on the console. Consider using the Data Viewer "
                                "pane to view these values.");
      } else {
        PrintMatrixWithHeading(context, heading, shown.dataset->GetData());
      }
      colourIgnored("datasets");
      break;
    case kind::MODEL:
      shown.model->PrintResults(context.dispatcher());
      colourIgnored("models");
      break;
    case kind::STRUCTURE:
      context.Fail(*this, msg::kPrintStructure);
    case kind::STRING:
      if (rgb) {
        context.dispatcher().PrintColor(Unescape(*shown.string), *rgb);
      } else {
        context.dispatcher().Print(Unescape(*shown.string));
      }
      break;
    default:
      context.InternalError("print_statement 1");
  }
}
