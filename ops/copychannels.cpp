// SPDX-License-Identifier: MIT
#include "ops/copychannels.h"

#include "ops/assignment.h"
#include "ops/ipv4.h"
#include "ops/suggest.h"
#include "ops/vocabulary.h"

#include <algorithm>

namespace ops {

namespace {

constexpr qint64 kHighestPort = 65535;

QByteArray withoutSide(const QByteArray &word)
{
    return word.startsWith("rx.") || word.startsWith("tx.") ? word.mid(3) : word;
}

// "port" is how people say "dst-port".
bool means(const KnownName &known, const QByteArray &token)
{
    const QByteArray bare = withoutSide(known.word);
    return token == known.word || token == bare || (token == "port" && bare == "dst-port") ||
           known.word.startsWith(token + '.') || known.place.split('/').first() == token;
}

std::vector<const KnownName *> channelNames()
{
    std::vector<const KnownName *> names;
    for (const KnownName &known : knownNames()) {
        if (known.path.isEmpty())
            names.push_back(&known);
    }
    return names;
}

Failure unknownField(const QByteArray &token)
{
    QByteArrayList words{"rx", "tx", "video", "audio", "anc", "port"};
    for (const KnownName *known : channelNames())
        words << known->word << withoutSide(known->word);
    return wrong("no field \"" + token.left(60) + '"' + didYouMean(token, words));
}

struct Step {
    QByteArray token;
    QByteArray text;
    qint64 address = 0; // amount for addresses
    qint64 number = 0;  // and for ports
};

// "0.0.1.0" and "256" are the same step of an address.
Outcome<Step> parseStep(const QByteArray &text)
{
    const int equals = text.indexOf('=');
    Step step{text.left(equals), text.mid(equals + 1)};
    bool ok = false;
    step.number = step.text.toLongLong(&ok);
    step.address = step.number;
    const Outcome<quint32> bits = addressBits(step.text);
    if (bits)
        step.address = *bits;
    const bool small = ok && step.number >= -0xffffffffLL && step.number <= 0xffffffffLL;
    if (equals < 1 || (!small && !bits))
        return wrong("\"" + text.left(60) + "\" is no step such as dst=0.0.1.0 or port=2");
    bool exists = false;
    for (const KnownName *known : channelNames()) {
        const bool steps = known->kind == Kind::Address || (known->kind == Kind::Port && ok);
        const bool meant = means(*known, step.token);
        if (meant && steps)
            return step;
        exists = exists || meant;
    }
    return exists ? wrong("the step " + text.left(60) + ": addresses and ports have steps, ports a number")
                  : unknownField(step.token);
}

int addressClass(quint32 address)
{
    int ones = 0;
    while (ones < 4 && (address >> (31 - ones) & 1))
        ++ones;
    return ones;
}

Outcome<Value> stepped(const KnownName &known, const Value &value, const Step &step, int times)
{
    if (known.kind == Kind::Port && !value.isText) {
        const qint64 port = value.number + step.number * times;
        if (value.number == 0 || (port >= 1 && port <= kHighestPort))
            return value.number == 0 ? value : Value::ofNumber(static_cast<quint32>(port));
        return wrong("port " + QByteArray::number(port) + " is none");
    }
    if (known.kind != Kind::Address || !value.isText || value.text.isEmpty())
        return value;
    const Outcome<quint32> from = addressBits(value.text);
    if (!from)
        return from.failure();
    const Outcome<quint32> to = steppedAddress(*from, step.address, times);
    if (!to)
        return to.failure();
    return Value::ofText(ipv4Text(*to));
}

class Copier {
public:
    Copier(const CopyOrder &order, Draft &draft) : m_order(order), m_draft(draft) {}
    Outcome<Done> run();

private:
    bool isWanted(const KnownName &known) const;
    Outcome<Done> takeSteps();
    Outcome<Done> copyTo(int channel, int times);
    Outcome<Value> valueFor(const KnownName &known, Value value, int times) const;

    const CopyOrder &m_order;
    Draft &m_draft;
    std::vector<Step> m_steps;
};

bool Copier::isWanted(const KnownName &known) const
{
    const auto matches = [&known](const QByteArray &token) { return means(known, token); };
    return m_order.fields.isEmpty() || std::any_of(m_order.fields.begin(), m_order.fields.end(), matches);
}

Outcome<Value> Copier::valueFor(const KnownName &known, Value value, int times) const
{
    for (const Step &step : m_steps) {
        if (!means(known, step.token))
            continue;
        const Outcome<Value> next = stepped(known, value, step, times);
        if (!next)
            return next;
        value = *next;
    }
    return value;
}

Outcome<Done> Copier::copyTo(int channel, int times)
{
    for (const KnownName *known : channelNames()) {
        if (!isWanted(*known))
            continue;
        const Value *source = m_draft.base().find(channelPath(m_order.from), known->name);
        if (!source) {
            m_draft.remove(channelPath(channel), known->name);
            continue;
        }
        const Outcome<Value> value = valueFor(*known, *source, times);
        if (!value)
            return wrong(keyInWords(channelPath(channel), known->name) + ": " + value.failure().text);
        m_draft.set(channelPath(channel), known->name, *value);
    }
    return Done();
}

// A step for what is not copied is a slip: nobody would see that nothing came of it.
Outcome<Done> Copier::takeSteps()
{
    const auto names = channelNames();
    for (const QByteArray &text : m_order.steps) {
        const Outcome<Step> step = parseStep(text);
        if (!step)
            return step.failure();
        const auto copied = [&](const KnownName *known) {
            return isWanted(*known) && means(*known, step->token);
        };
        if (std::none_of(names.begin(), names.end(), copied))
            return wrong("the step " + text.left(60) + " is for a field that is not copied");
        m_steps.push_back(*step);
    }
    return Done();
}

Outcome<Done> Copier::run()
{
    const Outcome<Done> taken = takeSteps();
    if (!taken)
        return taken;
    for (const QByteArray &token : m_order.fields) {
        const auto names = channelNames();
        if (std::none_of(names.begin(), names.end(),
                         [&](const KnownName *known) { return means(*known, token); }))
            return unknownField(token);
    }
    int times = 0;
    for (const int channel : m_order.to) {
        if (channel == m_order.from)
            return wrong("a channel is not copied onto itself");
        const Outcome<Done> done = copyTo(channel, ++times);
        if (!done)
            return done;
    }
    return Done();
}

const KnownName &flowWord(int channel, int flow, const QByteArray &word)
{
    return *knownByWord({channel, Element::Audio, flow, {}}, word);
}

void setFlow(int channel, int flow, const QByteArray &side, quint32 address, quint32 port, Draft &draft)
{
    const QByteArray path = channelPath(channel);
    const quint32 used = flagBit(Field::DestinationAddress) | flagBit(Field::DestinationPort);
    const QByteArray use = flowWord(channel, flow, side + "use").name;
    draft.set(path, flowWord(channel, flow, side + "dst").name, Value::ofText(ipv4Text(address)));
    draft.set(path, flowWord(channel, flow, side + "dst-port").name, Value::ofNumber(port));
    draft.set(path, use, Value::ofNumber(draft.number(path, use) | used));
}

} // namespace

Outcome<quint32> steppedAddress(quint32 address, qint64 step, int times)
{
    const qint64 to = static_cast<qint64>(address) + step * times;
    const bool inside = to >= 0 && to <= 0xffffffffLL;
    if (!inside || addressClass(static_cast<quint32>(to)) != addressClass(address))
        return wrong(ipv4Text(address) + " and " + QByteArray::number(times) +
                     (times == 1 ? " step" : " steps") + " leave the class of the address");
    return static_cast<quint32>(to);
}

Outcome<Done> copyChannels(const CopyOrder &order, Draft &draft)
{
    return Copier(order, draft).run();
}

Outcome<Done> setFlows(int channel, const FlowOrder &order, Draft &draft)
{
    const Place place{channel, Element::Audio, kNoFlow, {}};
    const QByteArrayList parts = order.from.split(':');
    const Outcome<quint32> address = addressBits(parts.first());
    if (!address)
        return address.failure();
    const Outcome<Value> port = fromWords(Kind::Port, parts.size() == 2 ? parts.last() : QByteArray());
    if (!port || port->number == 0)
        return wrong('"' + order.from.left(60) +
                     "\": an address and a port are needed, as in 239.30.0.1:20000");
    const Outcome<quint32> step = addressBits(order.step.isEmpty() ? "0.0.0.1" : order.step);
    if (!step)
        return step.failure();
    for (int flow = 0; flow < order.count; ++flow) {
        const Outcome<quint32> group = steppedAddress(*address, *step, flow);
        const qint64 number = port->number + static_cast<qint64>(order.portStep) * flow;
        if (!group || number < 1 || number > kHighestPort)
            return group ? wrong("port " + QByteArray::number(number) + " is none") : group.failure();
        for (const char *side : {"rx.", "tx."}) {
            if (side[0] == 'r' ? order.receive : order.send)
                setFlow(channel, flow, side, *group, static_cast<quint32>(number), draft);
        }
    }
    return assign(place, "flows=" + QByteArray::number(order.count), Foreign::Refuse, draft);
}

} // namespace ops
