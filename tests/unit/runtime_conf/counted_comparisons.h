#pragma once

#include <functional>

namespace tavek::test {

/// How many times the action calls strcmp, which all searches compare names with.
int comparisons_of(const std::function<void()>& action);

} // namespace tavek::test
