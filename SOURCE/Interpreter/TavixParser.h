// TavixParser: one method per grammar rule; statements run as soon as they are recognised.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "Ast.h"
#include "AstConditions.h"
#include "AstBuiltins.h"
#include "AstExpressions.h"
#include "AstStatements.h"
#include "ErrorReports.h"
#include "ExecContext.h"
#include "Session.h"
#include "TokenSet.h"
#include "TokenStream.h"

struct FunctionCallExpression;
struct MthreadExpression;
struct ModelExpression;
struct ModelEquation;
struct ModelOptionNode;
struct ConstraintNode;
struct PostOptionNode;
struct PostEstimationStatement;

// Raised instead of a report while an alternative is tried speculatively; Speculate catches it.
struct BacktrackFailure {};

// A name or a dotted path of names as written (`id_item`).
struct IdItem {
  std::vector<std::string> path;
  int first = 0;
  int last = 0;
};

// Reads tokens and runs what it reads. Every rule method takes the execute flag: when it is true
// (and the parser is not trying an alternative speculatively), the rule runs its statement as
// soon as the statement is complete; when it is false, the rule only builds nodes, which a
// compound statement runs later. User errors are thrown as TavixError with the finished report.
class TavixParser {
public:
  // The parser reads `stream` and works on `session`; both must outlive it. `inputName` and
  // `lineOffset` say what reports call the input and how its lines are numbered.
  TavixParser(TokenStream& stream, Session& session, std::string inputName, long lineOffset);
  // The same, with names resolving in `workspace` (a function call's local workspace).
  TavixParser(TokenStream& stream, Session& session, Workspace& workspace, std::string inputName,
              long lineOffset);

  // program: statement_list. Runs a whole script.
  void program();
  // statement_list: statement*. The nodes are kept only when the flag is false.
  std::unique_ptr<Block> statement_list(bool execute);
  // statement: one statement, chosen by its first token.
  StatementPtr statement(bool execute);
  // general_error: something that cannot stand alone as a statement.
  StatementPtr general_error(bool execute);
  // Runs statement_list(true) from the token with that index, then puts the stream back.
  void exec(const std::string& rule, int tokenIndex);

  // id_item: ID (DOT ID)*
  IdItem id_item(bool execute);
  // id_value: id_item, resolved against the workspace when evaluated.
  ExpressionPtr id_value(bool execute);
  // rhs_matrix: the right side of assignments and the expression general_error evaluates.
  ExpressionPtr rhs_matrix(bool execute);
  // string_item: a string value.
  ExpressionPtr string_item(bool execute);
  // The arithmetic rules, loosest binding first.
  ExpressionPtr expr(bool execute);
  ExpressionPtr term(bool execute);
  ExpressionPtr factor(bool execute);
  ExpressionPtr postfix_expr(bool execute);
  ExpressionPtr signed_expr(bool execute);
  ExpressionPtr primary_expr(bool execute);
  ExpressionPtr tavix_value(bool execute);
  ExpressionPtr block_matrix(bool execute);
  ExpressionPtr id_value_range(bool execute);
  std::unique_ptr<IndexArgument> index_argument(bool execute);

  // assign_statement, single_assign and print_statement.
  StatementPtr assign_statement(bool execute);
  StatementPtr single_assign(bool execute);
  StatementPtr strreplace_statement(bool execute);
  StatementPtr keepdrop_statement(bool execute);
  StatementPtr clear_statement(bool execute);
  StatementPtr setbinary_statement(bool execute);
  void target_range(AssignStatement& node, bool execute, const TokenSet& next);
  StatementPtr print_statement(bool execute);

  // Compound statements and their conditions.
  StatementPtr if_statement(bool execute);
  StatementPtr while_statement(bool execute);
  StatementPtr for_statement(bool execute);
  BoolExpressionPtr condition_in_parentheses(bool execute);
  BoolExpressionPtr bool_expr(bool execute);
  BoolExpressionPtr bool_signed(bool execute);
  BoolExpressionPtr bool_primary(bool execute);
  BoolExpressionPtr bool_simple(bool execute);
  BoolExpressionPtr strcmp_bool(bool execute);
  // Logical conditions: one truth value per element.
  LogicalExpressionPtr logical_expr(bool execute);
  LogicalExpressionPtr logical_signed(bool execute);
  LogicalExpressionPtr logical_primary(bool execute);
  LogicalExpressionPtr logical_simple(bool execute);

  // User functions.
  StatementPtr function_run(bool execute);
  StatementPtr function_call(bool execute);
  std::unique_ptr<FunctionCallExpression> function_call_value(bool execute);
  std::unique_ptr<BuiltinCallExpression> builtin_function(bool execute);
  ExpressionPtr name_list();
  ExpressionPtr option_value(bool execute);
  StatementPtr builtin_statement(bool execute);
  // The tokens an option's name may be: a string, or one of the quoted words the lexer reads as
  // tokens of their own ("constraints", "lags", "diff", ...).
  static bool IsOptionName(int type);
  // Whether the next token is the keyword of a built-in function.
  bool StartsBuiltin() const;
  StatementPtr multi_assign(bool execute);
  // Parallel calls of a user function, as a value and as a statement.
  std::unique_ptr<MthreadExpression> mthread_call(bool execute);
  StatementPtr mthread_statement(bool execute);

  // close(all) and close(title).
  StatementPtr close_statement(bool execute);

  // Post-estimation statements (one shared rule behind the statement table's names).
  StatementPtr print_assign_matrix(bool execute);
  StatementPtr plot_assign_statement(bool execute);
  StatementPtr forecast_statement(bool execute);
  StatementPtr predict_statement(bool execute);
  StatementPtr comparing_statement(bool execute);
  StatementPtr stabtest_statement(bool execute);
  StatementPtr store_statement(bool execute);
  StatementPtr postestimation_statement(bool execute);
  PostOptionNode post_option(bool execute);
  void post_item(PostEstimationStatement& node, bool execute);

  // Model statements.
  bool StartsModel() const;
  StatementPtr model_statement(bool execute);
  ExpressionPtr model(bool execute);
  ExpressionPtr model1(bool execute);
  ExpressionPtr model2(bool execute);
  ExpressionPtr model3(bool execute);
  ExpressionPtr model4(bool execute);
  ExpressionPtr model5(bool execute);
  ExpressionPtr model6(bool execute);
  ExpressionPtr model7(bool execute);
  ExpressionPtr model_jagsbugsstan(bool execute);
  ExpressionPtr list_model(int keywordType, bool execute);
  ExpressionPtr series_model(int keywordType, bool execute);
  ModelEquation model_equation();
  void model_options(ModelExpression& node, bool execute);
  ModelOptionNode model_option(const std::string& name, int nameIndex, bool execute);
  std::vector<ConstraintNode> lconstr();
  ConstraintNode constraint();

  // Session statements.
  StatementPtr tictoc_statement(bool execute);
  StatementPtr system_statement(bool execute);
  StatementPtr control_statement(bool execute);
  ExpressionPtr command_argument(bool execute);

  ExecContext& context() { return m_context; }
  TokenStream& stream() { return m_stream; }

  // A row of the statement table: the rule that a first token selects, and whether the
  // statement matches its terminating ";" itself after the rule.
  struct StatementRule {
    StatementPtr (TavixParser::*rule)(bool) = nullptr;
    bool semicolonAfter = false;
  };
  // The statement table, indexed by token type; rows without a rule select no statement.
  static const std::array<StatementRule, tok::TOKEN_TYPE_COUNT>& StatementTable();
  // The tokens that start a statement, and what may follow a whole statement.
  static const TokenSet& StatementStarters();
  static const TokenSet& StatementFollow();
  // The tokens that may start an expression, and a condition.
  static const TokenSet& ExpressionStarters();
  static const TokenSet& ConditionStarters();

protected:
  int LA(int k) const { return m_stream.LA(k); }
  const Token& LT(int k) const { return m_stream.LT(k); }
  std::string TextOf(const Token& token) const { return std::string(m_stream.Text(token)); }
  // Whether actions run: the flag is true and nothing is being tried speculatively.
  bool Executing(bool execute) const { return execute && m_backtracking == 0; }
  // Runs a finished statement node when the flag says so.
  void RunIfExecuting(const Statement& statement, bool execute);

  // Matches the current token against `type` and consumes it. On a mismatch: when `type`
  // follows the offending token, that token is unwanted; when the offending token may follow
  // `type` (it is in `follow`, or in the enclosing rule's follow set when `follow` is empty),
  // `type` is missing; otherwise a plain mismatch. The report is thrown.
  const Token& match(int type, const TokenSet& follow = {});
  // Tries `parse` without running anything; true when it would parse. The stream is put back.
  template <class Parse>
  bool Speculate(Parse parse) {
    const int start = m_stream.Index();
    const std::size_t brackets = m_bracketContext.size();
    const std::size_t follows = m_followStack.size();
    ++m_backtracking;
    bool parsed = true;
    try {
      parse();
    } catch (const BacktrackFailure&) {
      parsed = false;
    }
    --m_backtracking;
    m_bracketContext.resize(brackets);
    m_followStack.resize(follows);
    m_stream.Seek(start);
    return parsed;
  }

  // operand ((AMP | VERT) operand)* as a Chain node, or the head alone.
  template <class Chain, class Operand, class Rule>
  std::unique_ptr<Operand> Chained(std::unique_ptr<Operand> head, Rule next);
  // SIM primary as a Not node, or the primary alone.
  template <class Not, class Rule>
  auto Negated(Rule primary) -> decltype(primary());
  // expr COMPARISON expr as a Comparison node.
  template <class Comparison>
  std::unique_ptr<Comparison> Compared(bool execute);
  // OPAREN rule CPAREN when the tokens read as that; null otherwise (nothing consumed).
  template <class Rule>
  auto Parenthesised(Rule rule, int kind, bool execute) -> decltype(rule(execute));

  // No alternative of the current rule starts with the current token.
  [[noreturn]] void NoViableAlt();
  [[noreturn]] void ThrowSyntaxError(SyntaxErrorKind kind, const Token& offending,
                                     int expectedType = 0, const std::string& message = {});

  ExpressionPtr Binary(ExpressionPtr left, const Token& op, ExpressionPtr right);
  ExpressionPtr Transposed(ExpressionPtr operand);
  // Inside a matrix literal, whether the sign at LT(1) starts a new element.
  bool SignStartsNewElement() const;

  // While the conditions of `test` are read: names (and prefix$name) are parameter labels.
  bool m_drawLabels = false;
  // How deeply the rules being read nest (parentheses, brackets, conditions, blocks): past
  // kMaxNesting the text is refused as a syntax error rather than exhaust the stack.
  static constexpr int kMaxNesting = 256;
  int m_nesting = 0;
  // Whether "(" at a token index opens a condition (key: index * 2 + 0 for boolean conditions,
  // + 1 for logical ones), as found by speculation.
  std::unordered_map<long long, bool> m_speculations;
  struct NestingGuard {
    explicit NestingGuard(TavixParser& parser);
    ~NestingGuard() { --m_parser.m_nesting; }
    NestingGuard(const NestingGuard&) = delete;
    NestingGuard& operator=(const NestingGuard&) = delete;
    TavixParser& m_parser;
  };
  // Whether each open bracket is a matrix literal's (true) or parentheses (false).
  std::vector<bool> m_bracketContext;
  // Follow sets of the rules being parsed, innermost last.
  std::vector<TokenSet> m_followStack;
  int m_backtracking = 0;

private:
  TokenStream& m_stream;
  ExecContext m_context;
};
