// SPDX-License-Identifier: MIT
#include "ops/suggest.h"

#include <algorithm>
#include <vector>

namespace ops {

namespace {

constexpr int kLongestWord = 64; // nothing we know is longer, and the work grows with the square

// Three rows of the usual table of distances; the one before the last finds swapped letters.
int distance(const QByteArray &left, const QByteArray &right)
{
    const auto columns = static_cast<std::size_t>(right.size()) + 1;
    std::vector<int> older(columns), last(columns), row(columns);
    for (std::size_t at = 0; at < columns; ++at)
        last[at] = static_cast<int>(at);
    for (int line = 1; line <= left.size(); ++line) {
        row[0] = line;
        for (int at = 1; at <= right.size(); ++at) {
            const auto place = static_cast<std::size_t>(at);
            const bool same = left[line - 1] == right[at - 1];
            row[place] = std::min({last[place] + 1, row[place - 1] + 1, last[place - 1] + (same ? 0 : 1)});
            const bool swapped =
                line > 1 && at > 1 && left[line - 1] == right[at - 2] && left[line - 2] == right[at - 1];
            if (swapped)
                row[place] = std::min(row[place], older[place - 2] + 1);
        }
        std::swap(older, last);
        std::swap(last, row);
    }
    return last.back();
}

} // namespace

QByteArray nearest(const QByteArray &word, const QByteArrayList &candidates)
{
    if (word.isEmpty() || word.size() > kLongestWord)
        return QByteArray();
    QByteArray best;
    int fewest = std::max(1, word.size() / 3) + 1;
    for (const QByteArray &candidate : candidates) {
        const int errors = distance(word.toLower(), candidate.toLower());
        if (errors < fewest) {
            fewest = errors;
            best = candidate;
        }
    }
    return best;
}

QByteArray didYouMean(const QByteArray &word, const QByteArrayList &candidates)
{
    const QByteArray guess = nearest(word, candidates);
    return guess.isEmpty() ? QByteArray() : "; did you mean " + guess + '?';
}

} // namespace ops
