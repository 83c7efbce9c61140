// The rules of session statements: timers, eval, run, system, pause, clc, getwd, who, maxfigures,
// setwd, seed.
#include "AstSession.h"
#include "TavixParser.h"

// command_argument: OPAREN expr CPAREN
ExpressionPtr TavixParser::command_argument(bool execute) {
  match(tok::OPAREN, ExpressionStarters());
  m_bracketContext.push_back(false);
  ExpressionPtr argument = expr(execute);
  m_bracketContext.pop_back();
  match(tok::CPAREN, {tok::SEMICOL});
  return argument;
}

// tictoc_statement: (TIC | CTIC | TOC) SEMICOL
StatementPtr TavixParser::tictoc_statement(bool execute) {
  auto node = std::make_unique<TimerStatement>();
  const Token& word = LT(1);
  m_stream.Consume();
  node->kind = word.type == tok::TIC    ? TimerStatement::Tic
               : word.type == tok::CTIC ? TimerStatement::Ctic
                                        : TimerStatement::Toc;
  node->first = node->last = word.index;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}

// system_statement: (EVAL | RUN | SYSTEM) OPAREN expr CPAREN SEMICOL
//                 | PAUSE (OPAREN expr CPAREN)? SEMICOL
StatementPtr TavixParser::system_statement(bool execute) {
  auto node = std::make_unique<SessionCommand>();
  const Token& word = LT(1);
  m_stream.Consume();
  node->first = word.index;
  switch (word.type) {
    case tok::EVAL: node->kind = SessionCommand::Eval; break;
    case tok::RUN: node->kind = SessionCommand::Run; break;
    case tok::SYSTEM: node->kind = SessionCommand::System; break;
    default: node->kind = SessionCommand::Pause; break;
  }
  if (node->kind != SessionCommand::Pause || LA(1) == tok::OPAREN) {
    node->argument = command_argument(execute);
  }
  node->last = LT(-1).index;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}

// control_statement: (CLC | GETWD | WHO) SEMICOL
//                  | (WHO | MAXFIGURES | SETWD | SEED) OPAREN expr CPAREN SEMICOL
StatementPtr TavixParser::control_statement(bool execute) {
  auto node = std::make_unique<ControlCommand>();
  const Token& word = LT(1);
  m_stream.Consume();
  node->first = word.index;
  switch (word.type) {
    case tok::CLC: node->kind = ControlCommand::Clc; break;
    case tok::GETWD: node->kind = ControlCommand::GetWd; break;
    case tok::WHO: node->kind = ControlCommand::Who; break;
    case tok::MAXFIGURES: node->kind = ControlCommand::MaxFigures; break;
    case tok::SEED: node->kind = ControlCommand::Seed; break;
    default: node->kind = ControlCommand::SetWd; break;
  }
  const bool optional = node->kind == ControlCommand::Who;
  const bool takesArgument = node->kind == ControlCommand::MaxFigures ||
                             node->kind == ControlCommand::SetWd ||
                             node->kind == ControlCommand::Seed;
  if (takesArgument || (optional && LA(1) == tok::OPAREN)) {
    node->argument = command_argument(execute);
  }
  node->last = LT(-1).index;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}
