// The rules for workspace names: id_item and id_value.
#include "AstExpressions.h"
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

// id_value: id_item
ExpressionPtr TavixParser::id_value(bool execute) {
  IdItem item = id_item(execute);
  auto node = std::make_unique<NameExpression>();
  node->first = item.first;
  node->last = item.last;
  node->path = std::move(item.path);
  return node;
}
