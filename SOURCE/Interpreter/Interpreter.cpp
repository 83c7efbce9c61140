// Running a program and a job.
#include "Interpreter.h"

#include <new>

#include "SystemGlobals.h"
#include "TavixError.h"
#include "TavixParser.h"
#include "TokenStream.h"

void RunProgram(Session& session, std::string code, const std::string& inputName,
                long lineOffset) {
  RunProgram(session, session.workspace, std::move(code), inputName, lineOffset);
}

void RunProgram(Session& session, Workspace& workspace, std::string code,
                const std::string& inputName, long lineOffset) {
  auto stream = std::make_shared<TokenStream>(std::move(code), inputName);
  TavixParser parser(*stream, session, workspace, inputName, lineOffset);
  parser.context().SetStreamOwner(stream);  // function definitions keep the text alive
  parser.program();
}

JobOutcome RunJob(Session& session, std::string code, const std::string& inputName,
                  long firstLine, const std::function<void()>& beforeEnable) {
  const EventDispatcher& out = session.dispatcher;
  const bool gui = Tavix_SYSTEM_NAMESPACE::RUN_GUI;
  if (gui) out.DisableRunButton();
  session.interruptRequested = false;
  JobOutcome outcome = JobOutcome::Completed;
  try {
    RunProgram(session, std::move(code), inputName.empty() ? "-memory-" : inputName, firstLine);
  } catch (const TavixError& error) {
    out.PrintError(error.what());
    outcome = JobOutcome::Failed;
  } catch (const TavixInterrupted&) {
    if (gui) {
      if (beforeEnable) beforeEnable();
      out.EnableRunButton();
    } else {
      out.PrintError("Operation interrupted.\n");
      out.Print(kExitingLine, false);
      out.Exit();
    }
    return JobOutcome::Interrupted;
  } catch (const std::bad_alloc&) {
    out.PrintError("Tavix ran out of memory; the job has been stopped.");
    outcome = JobOutcome::Failed;
  } catch (const std::exception& error) {
    out.PrintInternalError(error.what());
    outcome = JobOutcome::Failed;
  }
  if (gui) {
    out.UpdateGUI();
    if (beforeEnable) beforeEnable();
    out.EnableRunButton();
  } else {
    out.Print(kExitingLine, false);
    out.Exit();
  }
  return outcome;
}
