// SPDX-License-Identifier: MIT
#include "ops/sdpfix.h"

#include "ops/printable.h"
#include "ops/sdpfixer.h"

#include <algorithm>

namespace ops {

void SdpFixer::replace(SdpLine &line, const QByteArray &text)
{
    if (line.text == text)
        return;
    m_fixed.changes.push_back({line.number, line.text, text});
    line.text = text;
}

void SdpFixer::remove(SdpSection &section, std::size_t at)
{
    noteRemoved(section.lines[at]);
    section.lines.erase(section.lines.begin() + static_cast<std::ptrdiff_t>(at));
}

void SdpFixer::insert(SdpSection &section, std::size_t at, const QByteArray &text)
{
    const int before = at > 0 ? section.lines[at - 1].number : 0;
    m_fixed.changes.push_back({before, QByteArray(), text});
    section.lines.insert(section.lines.begin() + static_cast<std::ptrdiff_t>(at), {before, text});
}

void SdpFixer::noteMoved(const SdpLine &line)
{
    m_fixed.changes.push_back({line.number, line.text, line.text});
}

void SdpFixer::noteRemoved(const SdpLine &line)
{
    m_fixed.changes.push_back({line.number, line.text, QByteArray()});
}

SdpLine *editable(SdpSection &section, const SdpLine *line)
{
    for (SdpLine &own : section.lines) {
        if (&own == line)
            return &own;
    }
    return nullptr;
}

SdpFixed fixSdp(const SdpText &text, const SdpFixOptions &options)
{
    SdpFixer fixer(text, options);
    for (const auto &steps : {sdpLineSteps(), sdpStreamSteps()}) {
        for (const SdpFixStep &step : steps) {
            if (step.whole)
                step.whole(fixer);
            for (std::size_t at = 0; step.section && at < fixer.media().size(); ++at)
                step.section(fixer, fixer.media()[at]);
        }
    }
    SdpFixed fixed = fixer.take();
    fixed.lineEnds = text.bareLineFeeds || text.openEnd;
    fixed.text.bareLineFeeds = fixed.text.openEnd = false;
    return fixed;
}

QByteArray sdpChangesText(const SdpFixed &fixed)
{
    QByteArray text;
    if (fixed.lineEnds)
        text += printable(fixed.text.file) + ": every line ends in CR LF\n";
    for (const SdpChange &change : fixed.changes) {
        const QByteArray before = printable(change.before), after = printable(change.after);
        text += printable(fixed.text.file) + ':' + QByteArray::number(change.line) + ": ";
        if (change.before == change.after)
            text += "moved to its place: " + after;
        else
            text += before.isEmpty() ? "added " + after
                                     : (after.isEmpty() ? "removed " + before : before + " -> " + after);
        text += '\n';
    }
    return text;
}

} // namespace ops
