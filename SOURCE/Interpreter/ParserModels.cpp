// The model rules: model, model1 to model7, model_jagsbugsstan, their options and constraints.
#include <charconv>

#include "AstModels.h"
#include "NumberText.h"
#include "TavixParser.h"

namespace {

double NumberOf(std::string_view text) {
  double value = 0.0;
  TextToDouble(text, value);
  return value;
}

}  // namespace

bool TavixParser::StartsModel() const {
  switch (LA(1)) {
    case tok::MODELS1: case tok::MODELS2: case tok::MODELS3: case tok::MODELS4:
    case tok::MODELS5: case tok::MODELS6: case tok::MODELS7: case tok::MODELSJAGSBUGSSTAN:
      return true;
    default:
      return false;
  }
}

// model_statement: model SEMICOL
StatementPtr TavixParser::model_statement(bool execute) {
  auto node = std::make_unique<ModelStatement>();
  node->model = model(execute);
  node->first = node->model->first;
  node->last = node->model->last;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}

// model: MODELS1 model1 | MODELS2 model2 | MODELS3 model3 | MODELS4 model4 | MODELS5 model5
//      | MODELS6 model6 | MODELS7 model7 | MODELSJAGSBUGSSTAN model_jagsbugsstan
ExpressionPtr TavixParser::model(bool execute) {
  switch (LA(1)) {
    case tok::MODELS1: return model1(execute);
    case tok::MODELS2: return model2(execute);
    case tok::MODELS3: return model3(execute);
    case tok::MODELS4: return model4(execute);
    case tok::MODELS5: return model5(execute);
    case tok::MODELS6: return model6(execute);
    case tok::MODELS7: return model7(execute);
    case tok::MODELSJAGSBUGSSTAN: return model_jagsbugsstan(execute);
    default: NoViableAlt();
  }
}

// model1: MODELS1 OPAREN model_equation (COMMA model_option)* CPAREN
ExpressionPtr TavixParser::model1(bool execute) { return list_model(tok::MODELS1, execute); }
// model2: MODELS2 OPAREN model_equation (COMMA model_option)* CPAREN
ExpressionPtr TavixParser::model2(bool execute) { return list_model(tok::MODELS2, execute); }
// model6: MODELS6 OPAREN model_equation (COMMA model_option)* CPAREN (alternative-specific
// variables after VERT)
ExpressionPtr TavixParser::model6(bool execute) { return list_model(tok::MODELS6, execute); }
// model7: MODELS7 OPAREN model_equation (COMMA model_option)* CPAREN
ExpressionPtr TavixParser::model7(bool execute) { return list_model(tok::MODELS7, execute); }

// The shared frame of the one-equation models.
ExpressionPtr TavixParser::list_model(int keywordType, bool execute) {
  auto node = std::make_unique<ModelExpression>();
  const Token& word = match(keywordType);
  node->first = word.index;
  node->keyword = TextOf(word);
  match(tok::OPAREN, {tok::ID});
  node->equations.push_back(model_equation());
  model_options(*node, execute);
  node->last = match(tok::CPAREN).index;
  return node;
}

// model3: MODELS3 OPAREN OCBRCKT model_equation CCBRCKT (COMMA OCBRCKT model_equation CCBRCKT)*
//         (COMMA model_option)* CPAREN
ExpressionPtr TavixParser::model3(bool execute) {
  auto node = std::make_unique<ModelExpression>();
  const Token& word = match(tok::MODELS3);
  node->first = word.index;
  node->keyword = TextOf(word);
  match(tok::OPAREN, {tok::OCBRCKT});
  do {
    if (!node->equations.empty()) m_stream.Consume();
    match(tok::OCBRCKT, {tok::ID});
    node->equations.push_back(model_equation());
    match(tok::CCBRCKT);
  } while (LA(1) == tok::COMMA && LA(2) == tok::OCBRCKT);
  model_options(*node, execute);
  node->last = match(tok::CPAREN).index;
  return node;
}

// model4: MODELS4 OPAREN ID (VERT ID+)? (COMMA model_option)* CPAREN (one series, exogenous
//         variables after VERT)
// model5: MODELS5 OPAREN ID+ (VERT ID+)? (COMMA model_option)* CPAREN (several series)
ExpressionPtr TavixParser::model4(bool execute) { return series_model(tok::MODELS4, execute); }
ExpressionPtr TavixParser::model5(bool execute) { return series_model(tok::MODELS5, execute); }

ExpressionPtr TavixParser::series_model(int keywordType, bool execute) {
  auto node = std::make_unique<ModelExpression>();
  const Token& word = match(keywordType);
  node->first = word.index;
  node->keyword = TextOf(word);
  match(tok::OPAREN, {tok::ID});
  ModelEquation series;
  series.regressors.push_back(TextOf(match(tok::ID)));
  while (keywordType == tok::MODELS5 && LA(1) == tok::ID) series.regressors.push_back(TextOf(match(tok::ID)));
  if (LA(1) == tok::VERT) {
    m_stream.Consume();
    do {
      series.secondList.push_back(TextOf(match(tok::ID)));
    } while (LA(1) == tok::ID);
  }
  node->equations.push_back(std::move(series));
  model_options(*node, execute);
  node->last = match(tok::CPAREN).index;
  return node;
}

// model_equation: ID SIM ID+ (VERT ID+)?
ModelEquation TavixParser::model_equation() {
  ModelEquation equation;
  equation.dependent = TextOf(match(tok::ID, {tok::SIM}));
  match(tok::SIM, {tok::ID});
  do {
    equation.regressors.push_back(TextOf(match(tok::ID)));
  } while (LA(1) == tok::ID);
  if (LA(1) == tok::VERT) {
    m_stream.Consume();
    do {
      equation.secondList.push_back(TextOf(match(tok::ID)));
    } while (LA(1) == tok::ID);
  }
  return equation;
}

// (COMMA model_option)*, where model_option: LIT_CONSTRAINTS ASSIGN lconstr
//   | (STRING | LIT_PREFIX | LIT_STATS | LIT_DIFF | LIT_LAGS | LIT_MA) ASSIGN (BTRUEFALSE | expr)
void TavixParser::model_options(ModelExpression& node, bool execute) {
  while (LA(1) == tok::COMMA) {
    m_stream.Consume();
    if (LA(1) == tok::LIT_CONSTRAINTS) {
      m_stream.Consume();
      match(tok::ASSIGN, {tok::OCBRCKT});
      node.hasConstraints = true;
      node.constraints = lconstr();
      continue;
    }
    const Token& name = IsOptionName(LA(1)) ? LT(1) : match(tok::STRING, {tok::ASSIGN});
    if (IsOptionName(LA(1))) m_stream.Consume();
    const std::string text = TextOf(name);
    match(tok::ASSIGN, ExpressionStarters());
    node.options.push_back(model_option(text.substr(1, text.size() - 2), name.index, execute));
  }
}

// The value of an option: BTRUEFALSE or expr.
ModelOptionNode TavixParser::model_option(const std::string& name, int nameIndex, bool execute) {
  ModelOptionNode option;
  option.name = name;
  option.first = nameIndex;
  m_bracketContext.push_back(false);
  if (LA(1) == tok::BTRUEFALSE) {
    const Token& word = match(tok::BTRUEFALSE);
    option.logical = true;
    option.word = TextOf(word);
    option.last = word.index;
  } else {
    option.value = expr(execute);
    option.last = option.value->last;
  }
  m_bracketContext.pop_back();
  return option;
}

// lconstr: OCBRCKT constraint (COMMA constraint)* CCBRCKT
std::vector<ConstraintNode> TavixParser::lconstr() {
  std::vector<ConstraintNode> constraints;
  match(tok::OCBRCKT, {tok::ID, tok::NUMBER, tok::MINUS, tok::PLUS});
  constraints.push_back(constraint());
  while (LA(1) == tok::COMMA) {
    m_stream.Consume();
    constraints.push_back(constraint());
  }
  match(tok::CCBRCKT);
  return constraints;
}

// constraint: (PLUS | MINUS)? constraint_term ((PLUS | MINUS) constraint_term)* ASSIGN
//             (PLUS | MINUS)? NUMBER
// constraint_term: NUMBER? MULT? ID (DOLLAR ID)?
ConstraintNode TavixParser::constraint() {
  ConstraintNode node;
  node.first = LT(1).index;
  double sign = 1.0;
  if (LA(1) == tok::PLUS || LA(1) == tok::MINUS) {
    sign = LA(1) == tok::MINUS ? -1.0 : 1.0;
    m_stream.Consume();
  }
  while (true) {
    ConstraintTerm term;
    term.coefficient = sign;
    if (LA(1) == tok::NUMBER) term.coefficient *= NumberOf(m_stream.Text(match(tok::NUMBER)));
    if (LA(1) == tok::MULT) m_stream.Consume();
    term.name = TextOf(match(tok::ID));
    if (LA(1) == tok::DOLLAR) {
      m_stream.Consume();
      term.prefix = term.name;
      term.name = TextOf(match(tok::ID));
    }
    node.terms.push_back(std::move(term));
    if (LA(1) != tok::PLUS && LA(1) != tok::MINUS) break;
    sign = LA(1) == tok::MINUS ? -1.0 : 1.0;
    m_stream.Consume();
  }
  match(tok::ASSIGN, {tok::NUMBER, tok::MINUS, tok::PLUS});
  double valueSign = 1.0;
  if (LA(1) == tok::PLUS || LA(1) == tok::MINUS) {
    valueSign = LA(1) == tok::MINUS ? -1.0 : 1.0;
    m_stream.Consume();
  }
  const Token& value = match(tok::NUMBER);
  node.value = valueSign * NumberOf(m_stream.Text(value));
  node.last = value.index;
  return node;
}

// model_jagsbugsstan: MODELSJAGSBUGSSTAN OPAREN expr (COMMA STRING ASSIGN (BTRUEFALSE | expr))*
//                     CPAREN
ExpressionPtr TavixParser::model_jagsbugsstan(bool execute) {
  auto node = std::make_unique<ExternalModelExpression>();
  const Token& word = match(tok::MODELSJAGSBUGSSTAN);
  node->first = word.index;
  node->keyword = TextOf(word);
  match(tok::OPAREN, ExpressionStarters());
  m_bracketContext.push_back(false);
  node->modelFile = expr(execute);
  m_bracketContext.pop_back();
  while (LA(1) == tok::COMMA) {
    m_stream.Consume();
    const Token& name = match(tok::STRING, {tok::ASSIGN});
    const std::string text = TextOf(name);
    match(tok::ASSIGN, ExpressionStarters());
    node->options.push_back(model_option(text.substr(1, text.size() - 2), name.index, execute));
  }
  node->last = match(tok::CPAREN).index;
  return node;
}
