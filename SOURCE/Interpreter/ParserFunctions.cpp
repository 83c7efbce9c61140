// The rules of user functions: definitions, calls, and assignments of several outputs.
#include "AstFunctions.h"
#include "AstParallelCalls.h"
#include "TavixParser.h"

// function_run: FUNCTION ((OBRCKT ID (COMMA ID)* CBRCKT | ID) ASSIGN)? ID
//               OPAREN (ID (COMMA ID)*)? CPAREN statement_list END
StatementPtr TavixParser::function_run(bool execute) {
  auto node = std::make_unique<FunctionStatement>();
  node->first = match(tok::FUNCTION).index;
  if (LA(1) == tok::OBRCKT) {
    m_stream.Consume();
    node->outputs.push_back(TextOf(match(tok::ID, {tok::COMMA, tok::CBRCKT})));
    while (LA(1) == tok::COMMA) {
      m_stream.Consume();
      node->outputs.push_back(TextOf(match(tok::ID, {tok::COMMA, tok::CBRCKT})));
    }
    match(tok::CBRCKT, {tok::ASSIGN});
    match(tok::ASSIGN, {tok::ID});
  } else if (LA(1) == tok::ID && LA(2) == tok::ASSIGN) {
    node->outputs.push_back(TextOf(match(tok::ID)));
    match(tok::ASSIGN, {tok::ID});
  }
  node->name = TextOf(match(tok::ID, {tok::OPAREN}));
  match(tok::OPAREN, {tok::ID, tok::CPAREN});
  if (LA(1) != tok::CPAREN) {
    node->inputs.push_back(TextOf(match(tok::ID, {tok::COMMA, tok::CPAREN})));
    while (LA(1) == tok::COMMA) {
      m_stream.Consume();
      node->inputs.push_back(TextOf(match(tok::ID, {tok::COMMA, tok::CPAREN})));
    }
  }
  match(tok::CPAREN, StatementFollow());
  // The body is read, never run here: a call runs it.
  node->body = statement_list(false);
  node->last = match(tok::END).index;
  RunIfExecuting(*node, execute);
  return node;
}

// function_call_value: FUNCID OPAREN (expr (COMMA expr)*)? CPAREN
std::unique_ptr<FunctionCallExpression> TavixParser::function_call_value(bool execute) {
  auto node = std::make_unique<FunctionCallExpression>();
  const Token& id = match(tok::FUNCID);
  node->first = id.index;
  node->name = TextOf(id).substr(1);
  match(tok::OPAREN, ExpressionStarters());
  m_bracketContext.push_back(false);
  if (LA(1) != tok::CPAREN) {
    node->arguments.push_back(rhs_matrix(execute));
    while (LA(1) == tok::COMMA) {
      m_stream.Consume();
      node->arguments.push_back(rhs_matrix(execute));
    }
  }
  m_bracketContext.pop_back();
  node->last = match(tok::CPAREN).index;
  return node;
}

// function_call: function_call_value (its ";" is matched by statement)
StatementPtr TavixParser::function_call(bool execute) {
  auto node = std::make_unique<FunctionCallStatement>();
  node->call = function_call_value(execute);
  node->first = node->call->first;
  node->last = node->call->last;
  RunIfExecuting(*node, execute);
  return node;
}

// mthread_call: MTHREAD OPAREN FUNCID COMMA expr (COMMA STRING ASSIGN expr)* CPAREN
std::unique_ptr<MthreadExpression> TavixParser::mthread_call(bool execute) {
  auto node = std::make_unique<MthreadExpression>();
  node->first = match(tok::MTHREAD).index;
  match(tok::OPAREN, {tok::FUNCID});
  m_bracketContext.push_back(false);
  node->name = TextOf(match(tok::FUNCID, {tok::COMMA})).substr(1);
  match(tok::COMMA, ExpressionStarters());
  node->arguments = expr(execute);
  while (LA(1) == tok::COMMA) {
    m_stream.Consume();
    const std::string option = TextOf(match(tok::STRING, {tok::ASSIGN}));
    match(tok::ASSIGN, ExpressionStarters());
    node->options.push_back({option.substr(1, option.size() - 2), expr(execute)});
  }
  m_bracketContext.pop_back();
  node->last = match(tok::CPAREN).index;
  return node;
}

// mthread_statement: mthread_call (its ";" is matched by statement)
StatementPtr TavixParser::mthread_statement(bool execute) {
  auto node = std::make_unique<MthreadStatement>();
  node->call = mthread_call(execute);
  node->first = node->call->first;
  node->last = node->call->last;
  RunIfExecuting(*node, execute);
  return node;
}

// multi_assign: OBRCKT target (COMMA target)* CBRCKT ASSIGN
//               (function_call_value | EIG builtin | QUAD builtin) SEMICOL
StatementPtr TavixParser::multi_assign(bool execute) {
  auto node = std::make_unique<MultiAssignStatement>();
  node->first = match(tok::OBRCKT).index;
  do {
    if (LA(1) == tok::COMMA) m_stream.Consume();
    IdItem item = id_item(execute);
    auto target = std::make_unique<AssignStatement>();
    target->first = item.first;
    target->last = target->targetLast = item.last;
    target->path = std::move(item.path);
    target->namesTarget = true;
    target_range(*target, execute, {tok::COMMA, tok::CBRCKT});
    node->targets.push_back(std::move(target));
  } while (LA(1) == tok::COMMA);
  match(tok::CBRCKT, {tok::ASSIGN});
  match(tok::ASSIGN, {tok::FUNCID, tok::EIG, tok::QUAD});
  if (LA(1) == tok::EIG || LA(1) == tok::QUAD) {
    node->call = builtin_function(execute);
  } else {
    node->call = function_call_value(execute);
  }
  node->last = node->call->last;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}
