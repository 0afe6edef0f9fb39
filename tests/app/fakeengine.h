// SPDX-License-Identifier: MIT
//
// An engine behind the dialog's hook for tests: writes down every command whole and answers with what the
// test put in.
#ifndef CORVEL_TEST_FAKEENGINE_H
#define CORVEL_TEST_FAKEENGINE_H

#include "app/mediacommand.h"

#include <QMap>
#include <QPair>
#include <QStringList>

#include <utility>

// Every member that is not zero, so that a line stands for the whole record.
inline QString commandLine(const MEDIACMD &command, int mode)
{
    QString line = QStringLiteral("%1 %2 channel %3")
                       .arg(mode == MediaMode::Ask ? QStringLiteral("ask") : QStringLiteral("tell"))
                       .arg(command.code)
                       .arg(command.channel);
    const auto number = [&line](const char *name, quint32 value) {
        if (value)
            line += QStringLiteral(" %1 %2").arg(QLatin1String(name)).arg(value);
    };
    const auto text = [&line](const char *name, const char *value) {
        if (*value)
            line += QStringLiteral(" %1 %2").arg(QLatin1String(name), QLatin1String(value));
    };
    number("element", command.element);
    number("flow", static_cast<quint32>(command.flow));
    number("type", command.type);
    number("clock", command.clockSource);
    number("domain", command.domain);
    number("field", command.field);
    number("value", command.value);
    text("text", command.text);
    text("from", command.sourceAddress);
    number("port", command.sourcePort);
    text("to", command.destinationAddress);
    number("port", command.destinationPort);
    text("interface", command.interfaceAddress);
    number("flags", command.flags);
    number("layout", command.audioLayout);
    return line;
}

template<int Size>
void put(char (&target)[Size], const char *text)
{
    qstrncpy(target, text, Size);
}

// The settings of one side of an element in one call.
inline MEDIACMD stream(const char *from, quint32 fromPort, const char *to, quint32 toPort,
                       const char *interfaceAddress, quint32 flags, quint32 layout = 0)
{
    MEDIACMD answer;
    put(answer.sourceAddress, from);
    put(answer.destinationAddress, to);
    put(answer.interfaceAddress, interfaceAddress);
    answer.sourcePort = fromPort;
    answer.destinationPort = toPort;
    answer.flags = flags;
    answer.audioLayout = layout;
    return answer;
}

class FakeEngine {
public:
    FakeEngine()
    {
        setMediaHook([this](MEDIACMD *command, int mode) {
            record.append(commandLine(*command, mode));
            if (mode == MediaMode::Ask)
                answer(command);
            return 1;
        });
    }
    ~FakeEngine() { setMediaHook({}); }

    // The commands since the last call.
    QStringList taken() { return std::exchange(record, {}); }

    QMap<int, MEDIACMD> configs;                 // by channel: type, clockSource, domain
    QMap<QPair<quint32, int>, MEDIACMD> streams; // by element code and flow, for every channel
    QStringList record;

private:
    void answer(MEDIACMD *command) const
    {
        if (command->code == MediaCode::GetConfig) {
            const MEDIACMD config = configs.value(command->channel);
            command->type = config.type;
            command->clockSource = config.clockSource;
            command->domain = config.domain;
        } else if (command->code == MediaCode::GetSettings) {
            const MEDIACMD question = *command;
            *command = streams.value({question.element, question.flow});
            command->code = question.code;
            command->channel = question.channel;
            command->element = question.element;
            command->flow = question.flow;
        }
    }
};

#endif
