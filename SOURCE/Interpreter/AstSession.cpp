// Running session statements: timers, eval and run, the shell, pause, the console and settings.
#include "AstSession.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

#include "ExecContext.h"
#include "Interpreter.h"
#include "ShellCommand.h"
#include "ValueKind.h"
#include "WorkspaceListing.h"

namespace {

// The argument as a string, or the message "The argument passed to "f" must be a string.".
std::string StringArgument(ExecContext& context, const Node& at, const Expression& argument,
                           const char* function) {
  const TavixValue value = argument.Evaluate(context);
  if (value.code != kind::STRING) {
    context.Fail(at, std::string("The argument passed to \"") + function + "\" must be a string.");
  }
  return *value.string;
}

// Runs code inside the running job, on the same workspace, one nesting level deeper.
void RunNested(ExecContext& context, const Node& at, std::string code, const std::string& name,
               long lineOffset) {
  ExecContext::NestingScope nested(context, at);
  RunProgram(context.session(), context.workspace(), std::move(code), name, lineOffset);
}

// Sleeps, waking often enough to notice an interrupt.
void InterruptibleSleep(ExecContext& context, double seconds) {
  using Clock = std::chrono::steady_clock;
  seconds = std::min(seconds, 1e7);  // beyond any useful pause, and within the clock's range
  const Clock::time_point end =
      Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  for (Clock::time_point now = Clock::now(); now < end; now = Clock::now()) {
    context.CheckInterrupt();
    std::this_thread::sleep_for(std::min<Clock::duration>(std::chrono::milliseconds(10), end - now));
  }
}

}  // namespace

void TimerStatement::Execute(ExecContext& context) const {
  Session& session = context.session();
  switch (kind) {
    case Tic:
      session.timer = Session::Timer::Wall;
      session.wallStart = std::chrono::steady_clock::now();
      return;
    case Ctic:
      session.timer = Session::Timer::Processor;
      session.processorStart = std::clock();
      return;
    case Toc:
      break;
  }
  double seconds = 0.0;
  if (session.timer == Session::Timer::Wall) {
    seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - session.wallStart).count();
  } else if (session.timer == Session::Timer::Processor) {
    seconds = static_cast<double>(std::clock() - session.processorStart) / CLOCKS_PER_SEC;
  } else {
    context.Fail(*this, "\"toc\" needs a timer started by \"tic\" or \"ctic\" first.");
  }
  char text[64];
  std::snprintf(text, sizeof text, "Elapsed time: %.6f seconds.\n", seconds);
  context.dispatcher().Print(text);
}

void SessionCommand::Execute(ExecContext& context) const {
  switch (kind) {
    case Eval: {
      // The text runs as lines of this statement's line, in the same workspace.
      std::string code = StringArgument(context, *this, *argument, "eval");
      RunNested(context, *this, std::move(code), context.inputName(), context.ReportLine(first) - 1);
      return;
    }
    case Run: {
      const std::string file = StringArgument(context, *this, *argument, "run");
      std::ifstream in(file, std::ios::binary);
      std::error_code error;
      if (!in || std::filesystem::is_directory(file, error)) {
        context.Fail(*this, "Unable to open file " + file + ".");
      }
      std::string code((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
      RunNested(context, *this, std::move(code), "\"" + file + "\"", 0);
      return;
    }
    case System: {
      const TavixValue value = argument->Evaluate(context);
      if (value.code != kind::STRING) {
        context.Fail(*this, "The argument passed to \"system\" must be a string.");
      }
      if (value.string->find_first_not_of(' ') == std::string::npos) {
        context.Fail(*this, "The string passed to \"system\" is either empty or contains only spaces.");
      }
      if (context.session().postToFrontEnd) {
        // With a window, the program runs beside it and its output reaches the console as it comes.
        context.dispatcher().Print("Output from system console:\n\n");
        context.RequestFrontEnd(*this, {FrontEndRequest::Kind::RunExternal, *value.string, nullptr});
        return;
      }
      const ShellCommandResult run = RunShellCommand(*value.string, context.session().interruptRequested);
      // What the command wrote before a stop is shown too.
      context.dispatcher().Print("Output from system console:\n\n" + run.output);
      context.CheckInterrupt();
      return;
    }
    case Pause: {
      if (argument) {
        const TavixValue value = argument->Evaluate(context);
        const bool valid = value.code == kind::MATRIX && value.matrix->size() == 1 &&
                           std::isfinite((*value.matrix)(0, 0)) && (*value.matrix)(0, 0) >= 0.0;
        if (!valid) {
          context.Fail(*this, "The argument passed to \"pause\" must be a non-negative number of "
                              "seconds.");
        }
        InterruptibleSleep(context, (*value.matrix)(0, 0));
        return;
      }
      // Waiting for the user: several calls at once cannot share the keyboard.
      context.RefuseInParallelCall(*this, "pause");
      if (context.session().postToFrontEnd) {
        context.RequestFrontEnd(*this, {FrontEndRequest::Kind::Pause, {}, nullptr});
      } else if (isatty(STDIN_FILENO)) {
        // Without a window, a terminal waits for Enter; a run fed from a pipe or file goes on.
        context.dispatcher().Print("Paused: press Enter to continue.\n");
        std::string line;
        std::getline(std::cin, line);
      }
      return;
    }
  }
}

void ControlCommand::Execute(ExecContext& context) const {
  switch (kind) {
    case Clc:
      context.dispatcher().ClearConsole();
      return;
    case GetWd: {
      std::error_code error;
      const std::filesystem::path directory = std::filesystem::current_path(error);
      if (error) context.Fail(*this, "Unable to read the current working directory.");
      context.dispatcher().Print(directory.string() + "\n");
      return;
    }
    case Who: {
      if (!argument) {
        context.dispatcher().Print(ListWorkspace(context.workspace()));
        return;
      }
      const TavixValue value = argument->Evaluate(context);
      const std::string name = context.stream().Text(argument->first, argument->last);
      if (value.code != kind::STRUCTURE) {
        context.Fail(*this, "The argument passed to \"who\" must be a structure.");
      }
      context.dispatcher().Print(ListStructure(name, *value.structure));
      return;
    }
    case MaxFigures: {
      const TavixValue value = argument->Evaluate(context);
      const bool valid = value.code == kind::MATRIX && value.matrix->size() == 1 &&
                         (*value.matrix)(0, 0) >= 1.0 &&
                         (*value.matrix)(0, 0) == std::floor((*value.matrix)(0, 0)) &&
                         (*value.matrix)(0, 0) <= 1000.0;
      if (!valid) {
        context.Fail(*this, "The argument passed to \"maxfigures\" must be a positive integer "
                            "(at most 1000).");
      }
      context.session().maxFigures = static_cast<int>((*value.matrix)(0, 0));
      return;
    }
    case Seed: {
      // Seeds up to 2^53, the whole numbers a double holds exactly.
      const TavixValue value = argument->Evaluate(context);
      const bool valid = value.code == kind::MATRIX && value.matrix->size() == 1 &&
                         (*value.matrix)(0, 0) >= 1.0 && (*value.matrix)(0, 0) <= 9007199254740992.0 &&
                         (*value.matrix)(0, 0) == std::floor((*value.matrix)(0, 0));
      if (!valid) context.Fail(*this, "The argument passed to \"seed\" must be a positive integer.");
      context.session().random.Seed(static_cast<std::uint64_t>((*value.matrix)(0, 0)));
      return;
    }
    case SetWd: {
      // The working directory belongs to the whole program, and other calls read files from it.
      context.RefuseInParallelCall(*this, "setwd");
      const std::string directory = StringArgument(context, *this, *argument, "setwd");
      std::error_code error;
      std::filesystem::current_path(directory, error);
      if (error) {
        context.Fail(*this, "Unable to change the working directory to \"" + directory + "\".");
      }
      return;
    }
  }
}
