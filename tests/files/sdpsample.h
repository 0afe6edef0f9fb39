// SPDX-License-Identifier: MIT
//
// The channel that the session description tests describe: each value is different, so that no two can
// be taken for one another. make_golden.py states the same values.
#ifndef CORVEL_TESTS_SDPSAMPLE_H
#define CORVEL_TESTS_SDPSAMPLE_H

#include "files/sdpwriter.h"

#include <QHash>

namespace sdpsample {

// clang-format off
inline const QHash<QString, QString> &videoAndAncValues()
{
    static const QHash<QString, QString> values = {
        {QStringLiteral("TransmitInterface"),         QStringLiteral("192.168.10.2")},
        {QStringLiteral("ReceiveDestinationIp"),      QStringLiteral("239.1.1.1")},
        {QStringLiteral("ReceiveSourceIp"),           QStringLiteral("192.168.20.1")},
        {QStringLiteral("ReceiveDestinationPort"),    QStringLiteral("20000")},
        {QStringLiteral("TransmitDestinationIp"),     QStringLiteral("239.2.1.1")},
        {QStringLiteral("TransmitIp"),                QStringLiteral("192.168.10.1")},
        {QStringLiteral("TransmitRemotePort"),        QStringLiteral("30000")},
        {QStringLiteral("ReceiveAncDestinationIp"),   QStringLiteral("239.1.3.1")},
        {QStringLiteral("ReceiveAncSourceIp"),        QStringLiteral("192.168.20.3")},
        {QStringLiteral("ReceiveAncDestinationPort"), QStringLiteral("20300")},
        {QStringLiteral("TransmitAncDestinationIp"),  QStringLiteral("239.2.3.1")},
        {QStringLiteral("TransmitAncIp"),             QStringLiteral("192.168.10.3")},
        {QStringLiteral("TransmitAncRemotePort"),     QStringLiteral("30300")},
        {QStringLiteral("ReceiveAudPacketLength"),    QStringLiteral("1")},
        {QStringLiteral("TransmitAudPacketLength"),   QStringLiteral("4")},
    };
    return values;
}

// Flow n's value is the text with n for "%1".
inline const QHash<QString, QString> &flowValues()
{
    static const QHash<QString, QString> values = {
        {QStringLiteral("ReceiveAudDestinationIp"),   QStringLiteral("239.1.2.10%1")},
        {QStringLiteral("ReceiveAudSourceIp"),        QStringLiteral("192.168.21.10%1")},
        {QStringLiteral("ReceiveAudDestinationPort"), QStringLiteral("2010%1")},
        {QStringLiteral("TransmitAudDestinationIp"),  QStringLiteral("239.2.2.10%1")},
        {QStringLiteral("TransmitAudIp"),             QStringLiteral("192.168.11.10%1")},
        {QStringLiteral("TransmitAudRemotePort"),     QStringLiteral("3010%1")},
    };
    return values;
}
// clang-format on

// Empty for a name that no writer may ask for.
inline QString value(const QString &name)
{
    const auto plain = videoAndAncValues().constFind(name);
    if (plain != videoAndAncValues().constEnd())
        return *plain;
    const QString flow = flowValues().value(name.chopped(1));
    return flow.isEmpty() ? QString() : flow.arg(name.right(1));
}

enum Clock { NoClock, Ptp, LocalMac };

inline void setClock(SdpInput &input, Clock clock)
{
    input.useGmId = clock != NoClock;
    input.clockIndex = clock == LocalMac ? 0 : 2;
    input.gmAddress =
        clock == LocalMac ? QStringLiteral("AC-DE-48-23-45-67") : QStringLiteral("AC-DE-48-FF-FE-23-45-67");
    input.gmDomain = QStringLiteral("127");
}

// Bits of `boxes`: 8 receive source, 4 receive destination, 2 send source, 1 send destination.
inline SdpInput input(int flows, int boxes, Clock clock)
{
    SdpInput in;
    in.value = [](const char *name, bool) { return value(QString::fromLatin1(name)); };
    in.width = QStringLiteral("1920");
    in.height = QStringLiteral("1080");
    in.rate = QStringLiteral("60000/1001");
    in.recSrc = boxes & 8;
    in.recDst = boxes & 4;
    in.sndSrc = boxes & 2;
    in.sndDst = boxes & 1;
    in.flows = flows;
    in.sessionId = Q_UINT64_C(1700000000123456);
    setClock(in, clock);
    return in;
}

// The six texts there are, by the names of their golden files.
struct Kind {
    const char *name;
    bool hasFlows;
    QString (*write)(const SdpInput &);
};

inline const QList<Kind> &kinds()
{
    using E = Element;
    using S = Side;
    static const QList<Kind> list = {
        {"element-video-rx", false,
         [](const SdpInput &in) { return writeElementSdp(in, E::Video, S::Receive); }},
        {"element-video-tx", false,
         [](const SdpInput &in) { return writeElementSdp(in, E::Video, S::Send); }},
        {"element-audio", true, [](const SdpInput &in) { return writeElementSdp(in, E::Audio, S::Receive); }},
        {"element-anc", false, [](const SdpInput &in) { return writeElementSdp(in, E::Anc, S::Receive); }},
        {"file-rx", true, [](const SdpInput &in) { return writeFileSdp(in, S::Receive); }},
        {"file-tx", true, [](const SdpInput &in) { return writeFileSdp(in, S::Send); }},
    };
    return list;
}

} // namespace sdpsample

#endif
