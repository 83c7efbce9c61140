// TestDialogs: the dialogs of the Tests menu, which write a test or a pmp statement.
#pragma once

#include <map>
#include <memory>
#include <string>

#include <wx/window.h>

class Model;

// A test of parameter restrictions: the model (`selected` preselected) and the conditions as
// typed; the statement, or "" when cancelled.
std::string AskParameterTest(wxWindow* parent, const std::map<std::string, std::shared_ptr<Model>>& models,
                             const std::string& selected);
// A comparison of models by posterior probabilities: the models to compare (all checked at first)
// and whether Chib & Jeliazkov's estimates are used too; the statement, or "" when cancelled.
std::string AskModelComparison(wxWindow* parent, const std::map<std::string, std::shared_ptr<Model>>& models);
