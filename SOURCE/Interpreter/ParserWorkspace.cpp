// The rules of workspace statements: clear.
#include "AstWorkspace.h"
#include "TavixParser.h"

// clear_statement: CLEAR OPAREN (ALL | MATRICES | DATASETS | MODELS | STRUCTURES | STRINGS
//                  | id_collection) CPAREN SEMICOL
// id_collection: id_item (COMMA id_item)*
StatementPtr TavixParser::clear_statement(bool execute) {
  auto node = std::make_unique<ClearStatement>();
  node->first = match(tok::CLEAR).index;
  match(tok::OPAREN, {tok::ID, tok::ALL});
  switch (LA(1)) {
    case tok::ALL:
    case tok::MATRICES:
    case tok::DATASETS:
    case tok::MODELS:
    case tok::STRUCTURES:
    case tok::STRINGS:
      node->collection = LA(1);
      m_stream.Consume();
      break;
    default:
      node->paths.push_back(id_item(execute).path);
      while (LA(1) == tok::COMMA) {
        m_stream.Consume();
        node->paths.push_back(id_item(execute).path);
      }
  }
  node->last = match(tok::CPAREN, {tok::SEMICOL}).index;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}
