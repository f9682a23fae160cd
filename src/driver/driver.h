#pragma once

namespace tavek {

/// One run of the tool: chooses the job from the command line and does it. Returns normally on success, also when there
/// is nothing to do. Ends the process with status 0 after printing help. Throws an exception derived from
/// std::exception for any failure; files are then as they were.
void run(int argc, const char* const* argv);

} // namespace tavek
