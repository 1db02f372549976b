// SPDX-License-Identifier: Apache-2.0

#include "base/WorkWatch.h"

#include <utility>

namespace Halvern::Base {

namespace {

thread_local WorkWatch* current = nullptr;

} // namespace

WorkWatch::~WorkWatch() = default;

WorkWatch* WorkWatch::OfThisThread() noexcept
{
    return current;
}

WorkWatch::Scope::Scope(WorkWatch& watch) noexcept : m_former(std::exchange(current, &watch)) {}

WorkWatch::Scope::~Scope()
{
    current = m_former;
}

} // namespace Halvern::Base
