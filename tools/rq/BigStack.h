#pragma once

#include <cstddef>
#include <functional>

/// The stack that a command runs on: trees are as deep as the text that a user gives, and most walks over them recurse.
/// Only what is used of it takes memory.
inline constexpr std::size_t kBigStackBytes = 512UL * 1024 * 1024;

/// Runs the task on a thread with a stack of kBigStackBytes, or of less where the system does not give twice that, and
/// waits for it. What the task throws is thrown here.
void RunOnBigStack(const std::function<void()>& task);
