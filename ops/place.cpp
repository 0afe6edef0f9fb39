// SPDX-License-Identifier: MIT
#include "ops/place.h"

#include "channel/channelstore.h"
#include "ops/suggest.h"

#include <algorithm>
#include <cstring>

namespace ops {

namespace {

constexpr struct {
    const char *word;
    Element element;
} kElements[] = {{"video", Element::Video}, {"audio", Element::Audio}, {"anc", Element::Anc}};

constexpr char kServer[] = "server";
constexpr char kSingle[] = "single";

QByteArray shown(const QByteArray &text)
{
    return '"' + text.left(80) + '"';
}

Outcome<Element> parseElement(const QByteArray &word)
{
    QByteArrayList words;
    for (const auto &row : kElements) {
        if (word == row.word)
            return row.element;
        words.append(row.word);
    }
    return wrong("no element " + shown(word) + ": video, audio or anc" + didYouMean(word, words));
}

// A number of at most so many digits that no overflow is possible, without sign or blanks.
std::optional<int> smallNumber(const char *digits, int count)
{
    if (count < 1 || count > 6)
        return std::nullopt;
    int number = 0;
    for (int at = 0; at < count; ++at) {
        if (digits[at] < '0' || digits[at] > '9')
            return std::nullopt;
        number = number * 10 + (digits[at] - '0');
    }
    return number;
}

std::optional<int> smallNumber(const QByteArray &text)
{
    return smallNumber(text.constData(), text.size());
}

// Equal without regard to case; mostly it is the same case.
bool alike(const char *left, const char *right, int bytes)
{
    const auto size = static_cast<std::size_t>(bytes);
    return memcmp(left, right, size) == 0 || qstrnicmp(left, right, static_cast<uint>(bytes)) == 0;
}

Outcome<std::vector<int>> parseFlows(const QByteArray &word)
{
    if (word == kSingle)
        return std::vector<int>{kSingleFlow};
    Outcome<std::vector<int>> flows = parseNumbers(word, kFlowCount);
    if (!flows)
        return wrong("no flow " + shown(word) + ": 0 to 7, * or single");
    const auto tooHigh = [](int flow) { return flow >= kFlowCount; };
    if (std::any_of(flows->begin(), flows->end(), tooHigh))
        return wrong("no flow " + shown(word) + ": flows have the numbers 0 to 7");
    return flows;
}

// What stands behind the channel, with the channel still missing.
Outcome<std::vector<Place>> parseBehind(const QByteArrayList &parts)
{
    Place place;
    if (parts.size() == 1)
        return std::vector<Place>{place};
    const Outcome<Element> element = parseElement(parts[1]);
    if (!element)
        return element.failure();
    place.element = *element;
    if (parts.size() == 2)
        return std::vector<Place>{place};
    if (parts.size() > 3 || *element != Element::Audio)
        return wrong("only audio has flows, as in 2/audio/3");
    const Outcome<std::vector<int>> flows = parseFlows(parts[2]);
    if (!flows)
        return flows.failure();
    std::vector<Place> places;
    for (const int flow : *flows) {
        place.flow = flow;
        places.push_back(place);
    }
    return places;
}

Outcome<Done> addRange(const QByteArray &range, std::vector<int> &numbers)
{
    const QByteArrayList ends = range.split('-');
    const std::optional<int> first = smallNumber(ends.first());
    const std::optional<int> last = smallNumber(ends.last());
    if (ends.size() > 2 || !first || !last || *first > *last || *last >= kMaxChannels)
        return wrong(shown(range) + " is no channel and no range of channels such as 1-7");
    for (int number = *first; number <= *last; ++number)
        numbers.push_back(number);
    return Done();
}

} // namespace

bool operator==(const Place &left, const Place &right)
{
    return left.channel == right.channel && left.element == right.element && left.flow == right.flow &&
           left.path == right.path;
}

QByteArray elementText(const Place &place)
{
    if (!place.element)
        return QByteArray();
    const QByteArray element = kElements[static_cast<int>(*place.element)].word;
    if (place.flow == kNoFlow)
        return element;
    return element + '/' + (place.flow == kSingleFlow ? QByteArray(kSingle) : QByteArray::number(place.flow));
}

QByteArray placeText(const Place &place)
{
    if (!place.path.isEmpty())
        return place.path;
    if (place.channel < 0)
        return kServer;
    const QByteArray behind = elementText(place);
    const QByteArray channel = QByteArray::number(place.channel);
    return behind.isEmpty() ? channel : channel + '/' + behind;
}

Outcome<Place> parsePlace(const QByteArray &text)
{
    const Outcome<std::vector<Place>> places = parsePlaces(text, 1);
    if (!places)
        return places.failure();
    if (places->size() != 1 || text.contains('*'))
        return wrong(shown(text) + " names several places; one is needed");
    return places->front();
}

Outcome<std::vector<int>> parseNumbers(const QByteArray &text, int count)
{
    std::vector<int> numbers;
    for (const QByteArray &part : text.split(',')) {
        const QByteArray range = part == "*" ? "0-" + QByteArray::number(count - 1) : part;
        if (part == "*" && count < 1)
            continue;
        const Outcome<Done> added = addRange(range, numbers);
        if (!added)
            return added.failure();
    }
    std::vector<bool> seen(kMaxChannels);
    const auto twice = [&seen](int number) {
        const auto at = static_cast<std::size_t>(number);
        const bool was = seen[at];
        seen[at] = true;
        return was;
    };
    numbers.erase(std::remove_if(numbers.begin(), numbers.end(), twice), numbers.end());
    return numbers;
}

Outcome<std::vector<Place>> parsePlaces(const QByteArray &text, int channels)
{
    if (text.contains('\0'))
        return wrong("a place holds no zero byte");
    if (text == kServer)
        return std::vector<Place>{Place()};
    if (text.contains('\\')) {
        Place place;
        place.path = text;
        return std::vector<Place>{place};
    }
    const QByteArrayList parts = text.split('/');
    const bool isNumber = !text.isEmpty() && (text[0] == '*' || (text[0] >= '0' && text[0] <= '9'));
    if (!isNumber)
        return wrong("no place " + shown(text) + ": a channel such as 2, 2/video, 2/audio/3, or server" +
                     didYouMean(text, {kServer}));
    const Outcome<std::vector<int>> numbers = parseNumbers(parts[0], channels);
    if (!numbers)
        return numbers.failure();
    const Outcome<std::vector<Place>> behind = parseBehind(parts);
    if (!behind)
        return behind.failure();
    std::vector<Place> places;
    for (const int number : *numbers) {
        for (Place place : *behind) {
            place.channel = number;
            places.push_back(place);
        }
    }
    return places;
}

QByteArray channelPath(int channel)
{
    return channelIpKeyName(channel).toLatin1();
}

int channelOfPath(const QByteArray &path)
{
    static const QByteArray zero = channelPath(0);
    static const int at = zero.indexOf('0');
    const int behind = zero.size() - at - 1;
    const int digits = path.size() - at - behind;
    const bool fits = digits > 0 && alike(path.constData(), zero.constData(), at) &&
                      alike(path.constData() + at + digits, zero.constData() + at + 1, behind);
    const std::optional<int> number = fits ? smallNumber(path.constData() + at, digits) : std::nullopt;
    // "Internal02" is a path of its own, not channel 2.
    const bool plain = number && (digits == 1 || path[at] != '0') && *number < kMaxChannels;
    return plain ? *number : -1;
}

} // namespace ops
