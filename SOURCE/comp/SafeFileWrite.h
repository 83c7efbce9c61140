// SafeFileWrite: writing a file so that a failure never leaves a damaged or half-written target.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>

// Writes `target` through a fresh temporary file created for the purpose in the target's
// directory: `write` fills it (returning false on a failure of its own), it is flushed to disk and
// then renamed over the target, so the target is either the old file or the whole new one. A
// symbolic link is written through: the file it points to (which may not exist yet) is replaced,
// through a temporary file in that file's directory. A target that exists and is not a regular
// file (a directory, a device, a pipe) is refused. The temporary file is removed on every
// failure, an exception thrown by `write` included. Returns "" or what went wrong.
std::string SafeFileWrite(const std::string& target, const std::function<bool(std::ostream&)>& write);
