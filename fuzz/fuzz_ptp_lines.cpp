// SPDX-License-Identifier: MIT
// What ptp4l writes: the first byte says how it is cut into reads. However it is, the same lines come of it.
#include "outputlines.h"
#include "require.h"

#include <algorithm>
#include <cstdint>
#include <vector>

using namespace rkptp;

namespace {

std::vector<std::string> linesOf(const char *text, size_t size, size_t step, std::string &last)
{
    OutputLines output;
    std::vector<std::string> lines;
    output.setReader([&lines](const std::string &line) {
        lines.push_back(line);
        return line.size() % 3 == 0;
    });
    for (size_t at = 0; at < size; at += step)
        output.take(text + at, std::min(step, size - at));
    last = output.last();
    return lines;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    const char *const text = reinterpret_cast<const char *>(data) + 1;
    std::string last;
    std::string lastInPieces;
    const auto whole = linesOf(text, size - 1, size, last);
    const auto inPieces = linesOf(text, size - 1, 1 + data[0] % 16, lastInPieces);
    require(whole == inPieces && last == lastInPieces, "lines depend on how they are read");
    require(last.size() <= 2 * OutputLines::kLongestLine + 2, "kept lines too long");
    for (const std::string &line : whole) {
        require(!line.empty() && line.size() <= OutputLines::kLongestLine, "length of a line");
        require(std::none_of(line.begin(), line.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; }),
                "control character");
    }
    OutputLines unread; // as for a child whose lines nobody reads
    unread.take(text, size - 1);
    return 0;
}
