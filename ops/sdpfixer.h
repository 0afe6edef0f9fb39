// SPDX-License-Identifier: MIT
//
// The steps that sdpfix walks, and the text they work on: every edit is noted. Private to ops/.
#ifndef CORVEL_OPS_SDPFIXER_H
#define CORVEL_OPS_SDPFIXER_H

#include "channel/channelkeys.h"
#include "ops/sdpfix.h"
#include "ops/sdpstream.h"

namespace ops {

class SdpFixer {
public:
    SdpFixer(const SdpText &text, const SdpFixOptions &options) : m_options(options) { m_fixed.text = text; }

    const SdpFixOptions &options() const { return m_options; }
    SdpText &text() { return m_fixed.text; }
    SdpSection &session() { return m_fixed.text.session; }
    std::vector<SdpSection> &media() { return m_fixed.text.media; }
    SdpStream stream(const SdpSection &section) const { return streamOf(m_fixed.text, section); }

    // Does nothing when the line reads so already.
    void replace(SdpLine &line, const QByteArray &text);
    void remove(SdpSection &section, std::size_t at);
    void insert(SdpSection &section, std::size_t at, const QByteArray &text);
    void append(SdpSection &section, const QByteArray &text) { insert(section, section.lines.size(), text); }
    void noteMoved(const SdpLine &line);
    void noteRemoved(const SdpLine &line);

    SdpFixed take() { return std::move(m_fixed); }

private:
    SdpFixed m_fixed;
    const SdpFixOptions &m_options;
};

// The line of a section that a view of it found, to be changed.
SdpLine *editable(SdpSection &section, const SdpLine *line);

struct SdpFixStep {
    const char *name;
    void (*whole)(SdpFixer &);
    void (*section)(SdpFixer &, SdpSection &); // each media section
};

TableView<SdpFixStep> sdpLineSteps();
TableView<SdpFixStep> sdpStreamSteps();

} // namespace ops

#endif
