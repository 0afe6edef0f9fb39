// SPDX-License-Identifier: MIT
#include "corvelctl/showtext.h"

#include "ops/assignment.h"
#include "ops/legs.h"
#include "ops/vocabulary.h"

namespace {

// What a word of a place holds, or "-"; a name that means nothing to us is one of a key path.
QByteArray wordValue(const ops::Snapshot &snapshot, const ops::Place &place, const char *word)
{
    const ops::KnownName *known = ops::knownByWord(place, word);
    const ops::Value *value =
        known ? snapshot.find(ops::pathOf(place, *known), known->name) : snapshot.find(place.path, word);
    const QByteArray text =
        value ? printable(ops::inWords(ops::kindOf(known, *value), *value)) : QByteArray();
    return text.isEmpty() ? "-" : text;
}

Json legItem(const ops::Leg &leg)
{
    return {{"src", jsonText(leg.source)},
            {"src_port", leg.sourcePort},
            {"dst", jsonText(leg.destination)},
            {"dst_port", leg.destinationPort},
            {"if", jsonText(leg.interface)},
            {"use", ops::inWords(ops::Kind::Use, ops::Value::ofNumber(leg.flags)).toStdString()}};
}

Json elementItem(const ops::Snapshot &snapshot, const ops::Place &place)
{
    return {{"place", ops::placeText(place).toStdString()},
            {"rx", legItem(ops::legOf(snapshot, place, Side::Receive))},
            {"tx", legItem(ops::legOf(snapshot, place, Side::Send))}};
}

const char *const kChannelWords[] = {"type", "format", "clock", "domain", "gm"};

Json channelItem(const ops::Snapshot &snapshot, int channel)
{
    const ops::Place place{channel, std::nullopt, ops::kNoFlow, {}};
    Json item{{"channel", channel}};
    for (const char *word : kChannelWords)
        item[word] = jsonText(wordValue(snapshot, place, word));
    item["flows"] = ops::flowCount(snapshot, channel);
    item["elements"] = Json::array();
    for (const ops::Place &element : ops::elementsOf(snapshot, channel))
        item["elements"].push_back(elementItem(snapshot, element));
    return item;
}

QByteArray address(const ops::Leg &leg)
{
    if (leg.destination.isEmpty() && leg.destinationPort == 0)
        return "-";
    return printable(leg.destination) + ':' + QByteArray::number(leg.destinationPort);
}

QByteArrayList tableRow(const ops::Snapshot &snapshot, int channel)
{
    const ops::Place whole{channel, std::nullopt, ops::kNoFlow, {}};
    const ops::Place video{channel, Element::Video, ops::kNoFlow, {}};
    return {QByteArray::number(channel),
            wordValue(snapshot, whole, "type"),
            wordValue(snapshot, whole, "format"),
            wordValue(snapshot, whole, "clock"),
            address(ops::legOf(snapshot, video, Side::Receive)),
            address(ops::legOf(snapshot, video, Side::Send)),
            QByteArray::number(ops::flowCount(snapshot, channel))};
}

void showLegs(Output &out, const ops::Snapshot &snapshot, const ops::Place &place, const QByteArray &name)
{
    const QByteArray head = name.leftJustified(9);
    out.line(head + " receives  " + printable(ops::legText(ops::legOf(snapshot, place, Side::Receive))));
    out.line(QByteArray(head.size(), ' ') + " sends     " +
             printable(ops::legText(ops::legOf(snapshot, place, Side::Send))));
}

void showChannel(Output &out, const ops::Snapshot &snapshot, int channel)
{
    const ops::Place place{channel, std::nullopt, ops::kNoFlow, {}};
    const ops::Place audio{channel, Element::Audio, ops::kNoFlow, {}};
    out.line(out.coloured("Channel-" + QByteArray::number(channel), Output::Colour::Head));
    for (const char *word : kChannelWords)
        out.line(QByteArray(word).leftJustified(9) + ' ' + wordValue(snapshot, place, word));
    out.line("audio     " + QByteArray::number(ops::flowCount(snapshot, channel)) + " flows of " +
             wordValue(snapshot, audio, "rx.channels") + " channels, packet time " +
             wordValue(snapshot, audio, "rx.ptime") + " us received, " +
             wordValue(snapshot, audio, "tx.ptime") + " us sent");
    for (const ops::Place &element : ops::elementsOf(snapshot, channel))
        showLegs(out, snapshot, element, ops::elementText(element));
}

// The flows of "2/audio", or the one place that was named.
std::vector<ops::Place> elementsAt(const ops::Snapshot &snapshot, const ops::Place &place)
{
    if (place.element != Element::Audio || place.flow != ops::kNoFlow)
        return {place};
    std::vector<ops::Place> flows = ops::elementsOf(snapshot, place.channel);
    return {flows.begin() + 1, flows.end() - 1}; // without video before and ancillary data behind
}

// The values of a place one by one: the server's, and those of a path.
void showWords(Output &out, const ops::Snapshot &snapshot, const ops::Place &place)
{
    for (const QByteArray &word : ops::wordsIn(snapshot, place)) {
        const QByteArray value = wordValue(snapshot, place, word.constData());
        out.item([&] {
            return Json{{"place", ops::placeText(place).toStdString()},
                        {"word", jsonText(word)},
                        {"value", jsonText(value)}};
        });
        out.line(printable(word).leftJustified(14) + ' ' + value);
    }
}

} // namespace

void showTable(Output &out, const ops::Snapshot &snapshot)
{
    std::vector<QByteArrayList> rows{
        {"Channel", "Type", "Format", "Clock", "Video receives", "Video sends", "Flows"}};
    const int channels = ops::channelCount(snapshot);
    for (int channel = 0; channel < channels; ++channel) {
        out.item([&] { return channelItem(snapshot, channel); });
        if (out.isText())
            rows.push_back(tableRow(snapshot, channel));
    }
    for (const QByteArray &line : aligned(rows))
        out.line(line);
}

void showPlace(Output &out, const ops::Snapshot &snapshot, const ops::Place &place, bool several)
{
    if (place.channel < 0) {
        showWords(out, snapshot, place);
    } else if (!place.element) {
        out.item([&] { return channelItem(snapshot, place.channel); });
        if (out.isText())
            showChannel(out, snapshot, place.channel);
    } else {
        for (const ops::Place &element : elementsAt(snapshot, place)) {
            out.item([&] { return elementItem(snapshot, element); });
            showLegs(out, snapshot, element, several ? ops::placeText(element) : ops::elementText(element));
        }
    }
}
