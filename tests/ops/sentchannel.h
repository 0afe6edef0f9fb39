// SPDX-License-Identifier: MIT
//
// A channel that sends a picture, sound and ancillary data, from words as a command takes them.
#ifndef TESTS_OPS_SENTCHANNEL_H
#define TESTS_OPS_SENTCHANNEL_H

#include "ops/assignment.h"

// Lines of a place and an assignment, "0/video tx.dst=239.1.1.1:20000".
inline ops::Snapshot channelOf(const QByteArrayList &settings)
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    for (const QByteArray &setting : settings) {
        const int blank = setting.indexOf(' ');
        const auto place = ops::parsePlace(setting.left(blank));
        if (!place || !ops::assign(*place, setting.mid(blank + 1), ops::Foreign::Refuse, draft))
            qFatal("%s", setting.constData());
    }
    ops::Snapshot values;
    for (const ops::Change &change : draft.changes())
        values.set(change.path, change.name, *change.after);
    return values;
}

inline QByteArrayList sentStreams()
{
    QByteArrayList settings{"0 clock=sw-ptp", "0 domain=127", "0 gm=AC-DE-48-FF-FE-23-45-67"};
    const auto send = [&settings](const QByteArray &place, const QByteArray &target) {
        for (const QByteArray &word : {QByteArray("tx.if=10.0.0.5"), QByteArray("tx.src=10.0.0.5"),
                                       "tx.dst=" + target, QByteArray("tx.use=all")})
            settings.append(place + ' ' + word);
    };
    send("0/video", "239.1.1.1:20000");
    send("0/anc", "239.1.1.3:20020");
    for (int flow = 0; flow < 8; ++flow)
        send("0/audio/" + QByteArray::number(flow), "239.1.2." + QByteArray::number(flow + 1) + ":20010");
    return settings;
}

#endif
