// Statements about the session rather than values: timers, nested scripts, the shell, the console.
#pragma once

#include "AstExpressions.h"

// tic; ctic; toc;
struct TimerStatement : Statement {
  enum Kind { Tic, Ctic, Toc } kind = Tic;
  void Execute(ExecContext& context) const override;
};

// eval(text); run(file); system(command); pause; pause(seconds);
struct SessionCommand : Statement {
  enum Kind { Eval, Run, System, Pause } kind = Eval;
  ExpressionPtr argument;  // empty for a bare pause
  void Execute(ExecContext& context) const override;
};

// clc; getwd; who; who(structure); maxfigures(n); setwd(directory); seed(n);
struct ControlCommand : Statement {
  enum Kind { Clc, GetWd, Who, MaxFigures, SetWd, Seed } kind = Clc;
  ExpressionPtr argument;  // empty for clc, getwd and a bare who
  void Execute(ExecContext& context) const override;
};
