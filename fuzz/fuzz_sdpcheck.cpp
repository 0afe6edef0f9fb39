// SPDX-License-Identifier: MIT
//
// Any bytes as a session description to check, fix and load. Beyond not crashing: findings name a line of the
// text, a fixed text is changed by no second fix, and the plan of a load names values of its channel only.
#include "ops/sdpcheck.h"
#include "ops/sdpfix.h"
#include "ops/sdpload.h"

#include <cstdio>
#include <cstdlib>

namespace {

void require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

// The lowest bit of the size picks what is known besides the text, so that those rules are reached too.
ops::SdpFixOptions optionsFor(size_t size)
{
    ops::SdpFixOptions options;
    if (size % 2)
        return options;
    options.ptp = "traceable";
    options.packetTime = "1";
    options.senderType = "2110TPN";
    options.facts = {true, 8};
    return options;
}

void checkFindings(const ops::SdpText &text, const ops::SdpFacts &facts)
{
    const int lines = static_cast<int>(text.lines().size());
    for (const ops::Finding &finding : ops::checkSdp({text}, facts)) {
        require(finding.place.startsWith("f:"), "place in another file");
        const int line = finding.place.mid(2).toInt();
        require(line >= 1 && line <= qMax(1, lines), "line that is not there");
        require(!finding.reason.isEmpty(), "no reason");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), int(size));
    const ops::SdpFixOptions options = optionsFor(size);
    const ops::SdpText text = ops::parseSdp(bytes, "f");
    checkFindings(text, options.facts);

    const QByteArray once = ops::sdpBytes(ops::fixSdp(text, options).text);
    const ops::SdpFixed twice = ops::fixSdp(ops::parseSdp(once, "f"), options);
    require(ops::sdpChangesText(twice).isEmpty(), "second fix changes something");
    require(ops::sdpBytes(twice.text) == once, "second fix gives another text");

    for (const ops::Change &change : ops::planSdpLoad(bytes, {}, 1).changes)
        require(change.path == "KWX\\Internal1\\IpConfig" && change.after, "value of another key");
    return 0;
}
