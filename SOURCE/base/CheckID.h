// CheckID: whether a text can be used as a name in the workspace.
#pragma once

#include <string_view>

// True when `name` is a letter or underscore followed by letters, digits or underscores.
bool CheckID(std::string_view name);
