#pragma once

#include <gtest/gtest.h>

#include <functional>

/// Looks every other millisecond whether the condition holds; a failure if it does
/// not within a minute.
testing::AssertionResult waitUntil(const std::function<bool()>& condition);
