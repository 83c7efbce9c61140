// The rules for workspace names: id_item and id_value.
#include "AstExpressions.h"
#include "AstPostEstimation.h"
#include "TavixParser.h"

// id_item: ID (DOT ID)*
IdItem TavixParser::id_item(bool) {
  IdItem item;
  const Token& head = match(tok::ID);
  item.first = head.index;
  item.last = head.index;
  item.path.push_back(TextOf(head));
  while (LA(1) == tok::DOT && LA(2) == tok::ID) {
    m_stream.Consume();
    const Token& member = match(tok::ID);
    item.path.push_back(TextOf(member));
    item.last = member.index;
  }
  return item;
}

// id_value: id_item; in the conditions of `test` also ID DOLLAR ID (a parameter label)
ExpressionPtr TavixParser::id_value(bool execute) {
  if (m_drawLabels && LA(1) == tok::ID && LA(2) == tok::DOLLAR) {
    auto label = std::make_unique<DrawLabelExpression>();
    const Token& prefix = match(tok::ID);
    m_stream.Consume();
    const Token& name = match(tok::ID);
    label->first = prefix.index;
    label->last = name.index;
    label->label = TextOf(prefix) + "$" + TextOf(name);
    return label;
  }
  IdItem item = id_item(execute);
  if (m_drawLabels && item.path.size() == 1) {
    auto label = std::make_unique<DrawLabelExpression>();
    label->first = item.first;
    label->last = item.last;
    label->label = item.path.front();
    auto fallback = std::make_unique<NameExpression>();
    fallback->first = item.first;
    fallback->last = item.last;
    fallback->path = std::move(item.path);
    label->fallback = std::move(fallback);
    return label;
  }
  auto node = std::make_unique<NameExpression>();
  node->first = item.first;
  node->last = item.last;
  node->path = std::move(item.path);
  return node;
}
