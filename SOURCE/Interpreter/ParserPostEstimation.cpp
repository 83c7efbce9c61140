// The post-estimation statements: mfx, predict, forecast, irf, stabtest, store, diagnostics,
// plotdraws, test and pmp.
#include "AstPostEstimation.h"
#include "TavixParser.h"

// print_assign_matrix: (DIAGNOSTICS | MFX | TEST) post_arguments SEMICOL
StatementPtr TavixParser::print_assign_matrix(bool execute) { return postestimation_statement(execute); }
// plot_assign_statement (the post-estimation ones): (IRF | PLOTDRAWS) post_arguments SEMICOL
StatementPtr TavixParser::plot_assign_statement(bool execute) { return postestimation_statement(execute); }
// forecast_statement: FORECAST post_arguments
StatementPtr TavixParser::forecast_statement(bool execute) { return postestimation_statement(execute); }
// predict_statement: PREDICT post_arguments
StatementPtr TavixParser::predict_statement(bool execute) { return postestimation_statement(execute); }
// comparing_statement: PMP OPAREN OCBRCKT ID (COMMA ID)* CCBRCKT (COMMA post_option)* CPAREN SEMICOL
StatementPtr TavixParser::comparing_statement(bool execute) { return postestimation_statement(execute); }
// stabtest_statement: STABTEST post_arguments SEMICOL
StatementPtr TavixParser::stabtest_statement(bool execute) { return postestimation_statement(execute); }
// store_statement: STORE OPAREN ID (COMMA ID)* (COMMA post_option)* CPAREN SEMICOL
StatementPtr TavixParser::store_statement(bool execute) { return postestimation_statement(execute); }

// post_arguments: OPAREN (post_item (COMMA post_item)*)? CPAREN, where post_item is a
// post_option or what the keyword lists: ID for store, ID (DOLLAR ID)? for plotdraws,
// logical_expr for test, OCBRCKT ID (COMMA ID)* CCBRCKT for pmp.
StatementPtr TavixParser::postestimation_statement(bool execute) {
  auto node = std::make_unique<PostEstimationStatement>();
  const Token& keyword = LT(1);
  node->keyword = TextOf(keyword);
  node->first = keyword.index;
  m_stream.Consume();
  match(tok::OPAREN);
  m_bracketContext.push_back(false);
  bool first = true;
  while (LA(1) != tok::CPAREN) {
    if (!first) match(tok::COMMA, {tok::STRING});
    first = false;
    if (IsOptionName(LA(1)) && LA(2) == tok::ASSIGN) {
      node->options.push_back(post_option(execute));
      continue;
    }
    post_item(*node, execute);
  }
  m_bracketContext.pop_back();
  node->last = match(tok::CPAREN, {tok::SEMICOL}).index;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}

// post_option: (STRING | LIT_PREFIX | ...) ASSIGN (BTRUEFALSE | expr | ID for "prefix")
PostOptionNode TavixParser::post_option(bool execute) {
  const Token& name = LT(1);
  m_stream.Consume();
  std::string text = TextOf(name);
  if (text.size() >= 2 && text.front() == '"') text = text.substr(1, text.size() - 2);
  match(tok::ASSIGN, ExpressionStarters());
  PostOptionNode option;
  if (text == "prefix" && LA(1) == tok::ID && (LA(2) == tok::COMMA || LA(2) == tok::CPAREN)) {
    const Token& identifier = match(tok::ID);
    option.name = text;
    option.first = name.index;
    option.last = identifier.index;
    option.identifier = TextOf(identifier);
    return option;
  }
  static_cast<ModelOptionNode&>(option) = model_option(text, name.index, execute);
  return option;
}

void TavixParser::post_item(PostEstimationStatement& node, bool execute) {
  const std::string& k = node.keyword;
  if (k == "test") {
    m_drawLabels = true;
    struct Reset {
      bool& flag;
      ~Reset() { flag = false; }
    } reset{m_drawLabels};
    node.conditions.push_back(logical_expr(execute));
    return;
  }
  if (k == "pmp") {
    match(tok::OCBRCKT, {tok::ID});
    while (true) {
      const Token& name = match(tok::ID, {tok::COMMA, tok::CCBRCKT});
      node.names.push_back(TextOf(name));
      Node where;
      where.first = where.last = name.index;
      node.nameNodes.push_back(where);
      if (LA(1) != tok::COMMA) break;
      m_stream.Consume();
    }
    match(tok::CCBRCKT, {tok::COMMA, tok::CPAREN});
    return;
  }
  if (k == "store" || k == "plotdraws") {
    const Token& name = match(tok::ID, {tok::COMMA, tok::CPAREN});
    std::string label = TextOf(name);
    Node where;
    where.first = where.last = name.index;
    if (k == "plotdraws" && LA(1) == tok::DOLLAR) {
      m_stream.Consume();
      const Token& member = match(tok::ID);
      label += "$" + TextOf(member);
      where.last = member.index;
    }
    node.names.push_back(label);
    node.nameNodes.push_back(where);
    return;
  }
  // The other statements take options only.
  match(tok::STRING, {tok::ASSIGN});
}
