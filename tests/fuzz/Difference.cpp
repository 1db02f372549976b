// SPDX-License-Identifier: Apache-2.0

#include "Difference.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace Halvern::Fuzz {

namespace {

void DropCommonEnds(std::string_view& a, std::string_view& b)
{
    const auto head = static_cast<std::size_t>(
        std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
    a.remove_prefix(head);
    b.remove_prefix(head);
    const auto tail = static_cast<std::size_t>(
        std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend()).first - a.rbegin());
    a.remove_suffix(tail);
    b.remove_suffix(tail);
}

/// The greedy way: for each number of changed bytes, how far into `a` each diagonal gets.
class Search
{
public:
    Search(std::string_view a, std::string_view b, std::size_t limit)
        : m_a(a), m_b(b), m_limit(static_cast<std::ptrdiff_t>(limit)), m_furthest(2 * limit + 3)
    {}

    bool Succeeds()
    {
        for (std::ptrdiff_t changes = 0; changes <= m_limit; ++changes)
            for (std::ptrdiff_t diagonal = -changes; diagonal <= changes; diagonal += 2)
                if (ReachesEnd(changes, diagonal))
                    return true;
        return false;
    }

private:
    std::ptrdiff_t& At(std::ptrdiff_t diagonal)
    {
        return m_furthest[static_cast<std::size_t>(diagonal + m_limit + 1)];
    }

    bool ReachesEnd(std::ptrdiff_t changes, std::ptrdiff_t diagonal)
    {
        const auto sizeOfA = static_cast<std::ptrdiff_t>(m_a.size());
        const auto sizeOfB = static_cast<std::ptrdiff_t>(m_b.size());
        const bool putsIn =
            diagonal == -changes || (diagonal != changes && At(diagonal - 1) < At(diagonal + 1));
        std::ptrdiff_t x = putsIn ? At(diagonal + 1) : At(diagonal - 1) + 1;
        while (x < sizeOfA && x - diagonal < sizeOfB && x - diagonal >= 0 &&
               m_a[static_cast<std::size_t>(x)] == m_b[static_cast<std::size_t>(x - diagonal)])
            ++x;
        At(diagonal) = x;
        return diagonal == sizeOfA - sizeOfB && x >= sizeOfA;
    }

    std::string_view m_a;
    std::string_view m_b;
    std::ptrdiff_t m_limit;
    std::vector<std::ptrdiff_t> m_furthest;
};

} // namespace

bool DifferByAtMost(std::string_view a, std::string_view b, std::size_t limit)
{
    DropCommonEnds(a, b);
    if (a.size() + b.size() <= limit)
        return true;
    const std::size_t apart = std::max(a.size(), b.size()) - std::min(a.size(), b.size());
    return apart <= limit && Search(a, b, limit).Succeeds();
}

} // namespace Halvern::Fuzz
