// SPDX-License-Identifier: MIT
//
// The orders of channelkeys.h side by side. None of them follows from another: each is the order of one
// list of store calls, of one page or of one engine.
#include "channel/channelkeys.h"

#include "channel/keytable.h"

namespace {

using KeyTable::hasRow;

constexpr FieldStep rx(Field field)
{
    return {Side::Receive, field};
}

constexpr FieldStep tx(Field field)
{
    return {Side::Send, field};
}

// clang-format off
// Video and ancillary data are loaded in one order, of which each takes the steps it has rows for. Audio
// has one of its own.
constexpr FieldStep kPlainLoadOrder[] = {
    rx(Field::SourceAddress), rx(Field::SourcePort), rx(Field::DestinationAddress), rx(Field::DestinationPort),
    rx(Field::Interface),
    tx(Field::SourceAddress), tx(Field::SourcePort), tx(Field::DestinationAddress), tx(Field::DestinationPort),
    tx(Field::Interface),
    rx(Field::Flags),
    tx(Field::Flags),
};

constexpr FieldStep kAudioLoadOrder[] = {
    rx(Field::SourceAddress), rx(Field::SourcePort), rx(Field::DestinationAddress), rx(Field::DestinationPort),
    rx(Field::Channels), rx(Field::Interface), rx(Field::Flags), rx(Field::PacketTime),
    tx(Field::SourceAddress), tx(Field::SourcePort), tx(Field::DestinationAddress), tx(Field::DestinationPort),
    tx(Field::Channels), tx(Field::Interface), tx(Field::Flags), tx(Field::PacketTime),
};

// The same split for saving; what the audio flows share comes before and after each side's addresses.
constexpr FieldStep kPlainSaveOrder[] = {
    rx(Field::SourceAddress), rx(Field::DestinationAddress), rx(Field::SourcePort), rx(Field::DestinationPort),
    rx(Field::Interface), rx(Field::Flags),
    tx(Field::SourceAddress), tx(Field::DestinationAddress), tx(Field::SourcePort), tx(Field::DestinationPort),
    tx(Field::Interface), tx(Field::Flags),
};

constexpr FieldStep kAudioSaveOrder[] = {
    rx(Field::PacketTime), rx(Field::Flags), rx(Field::Interface),
    tx(Field::Interface), tx(Field::Flags), tx(Field::PacketTime),
    rx(Field::SourceAddress), rx(Field::DestinationAddress), rx(Field::SourcePort), rx(Field::DestinationPort),
    rx(Field::Channels),
    tx(Field::SourceAddress), tx(Field::DestinationAddress), tx(Field::SourcePort), tx(Field::DestinationPort),
    tx(Field::Channels),
};

constexpr FieldStep kNetworkFieldOrder[] = {
    rx(Field::SourceAddress), rx(Field::SourcePort), rx(Field::DestinationAddress), rx(Field::DestinationPort),
    rx(Field::Interface),
    tx(Field::SourceAddress), tx(Field::SourcePort), tx(Field::DestinationAddress), tx(Field::DestinationPort),
    tx(Field::Interface),
};

constexpr FieldStep kLockAllOrder[] = {
    rx(Field::SourceAddress), rx(Field::SourcePort), rx(Field::DestinationPort), rx(Field::DestinationAddress),
    rx(Field::Interface),
    tx(Field::SourceAddress), tx(Field::SourcePort), tx(Field::DestinationAddress), tx(Field::DestinationPort),
    tx(Field::Interface),
};

constexpr FieldStep kLockedCopyOrder[] = {
    rx(Field::DestinationAddress), rx(Field::SourceAddress),
    tx(Field::DestinationAddress), tx(Field::SourceAddress),
    rx(Field::DestinationPort), rx(Field::SourcePort),
    tx(Field::DestinationPort), tx(Field::SourcePort),
};

constexpr FieldStep kLockedInterfaceOrder[] = {
    rx(Field::Interface),
    tx(Field::Interface),
};

constexpr Element kElementOrder[] = {Element::Video, Element::Audio, Element::Anc};
constexpr Side kSideOrder[] = {Side::Receive, Side::Send};
// clang-format on

// The steps of an order that one element has rows for.
template<std::size_t N>
struct Steps {
    FieldStep step[N];
    std::size_t count;
};

template<std::size_t N>
constexpr Steps<N> stepsOf(Element element, const FieldStep (&order)[N])
{
    Steps<N> steps{};
    for (const FieldStep &step : order) {
        if (hasRow(element, step))
            steps.step[steps.count++] = step;
    }
    return steps;
}

constexpr auto kVideoLoad = stepsOf(Element::Video, kPlainLoadOrder);
constexpr auto kAudioLoad = stepsOf(Element::Audio, kAudioLoadOrder);
constexpr auto kAncLoad = stepsOf(Element::Anc, kPlainLoadOrder);
constexpr auto kVideoSave = stepsOf(Element::Video, kPlainSaveOrder);
constexpr auto kAudioSave = stepsOf(Element::Audio, kAudioSaveOrder);
constexpr auto kAncSave = stepsOf(Element::Anc, kPlainSaveOrder);

// ------------------------------------------------------------- what the compiler checks of the orders

template<std::size_t N>
constexpr int timesIn(const Steps<N> &steps, const ChannelKey &key)
{
    int times = 0;
    for (std::size_t i = 0; i < steps.count; ++i)
        times += steps.step[i].side == key.side && steps.step[i].field == key.field;
    return times;
}

// Every field of an element is loaded and saved, and once. The totals of audio are no field of the page:
// they follow from two combos and are written when one of these changes.
template<std::size_t N>
constexpr bool covers(const Steps<N> &steps, Element element)
{
    for (const ChannelKey &key : KeyTable::kKeys) {
        if (key.element == element && timesIn(steps, key) != (key.field == Field::TotalChannels ? 0 : 1))
            return false;
    }
    return true;
}

static_assert(covers(kVideoLoad, Element::Video), "a video key has no place in the load order, or two");
static_assert(covers(kAudioLoad, Element::Audio), "an audio key has no place in the load order, or two");
static_assert(covers(kAncLoad, Element::Anc), "an ancillary key has no place in the load order, or two");
static_assert(covers(kVideoSave, Element::Video), "a video key has no place in the save order, or two");
static_assert(covers(kAudioSave, Element::Audio), "an audio key has no place in the save order, or two");
static_assert(covers(kAncSave, Element::Anc), "an ancillary key has no place in the save order, or two");

// A step that no element has a row for would vanish without a word.
template<std::size_t N>
constexpr bool known(const FieldStep (&order)[N], Element one, Element other)
{
    for (const FieldStep &step : order) {
        if (!hasRow(one, step) && !hasRow(other, step))
            return false;
    }
    return true;
}

static_assert(known(kPlainLoadOrder, Element::Video, Element::Anc), "a step of the load order has no row");
static_assert(known(kAudioLoadOrder, Element::Audio, Element::Audio), "a step of the load order has no row");
static_assert(known(kPlainSaveOrder, Element::Video, Element::Anc), "a step of the save order has no row");
static_assert(known(kAudioSaveOrder, Element::Audio, Element::Audio), "a step of the save order has no row");

// The other orders are walked for every element.
template<std::size_t N>
constexpr bool everywhere(const FieldStep (&order)[N])
{
    for (const Element element : kElementOrder) {
        if (!known(order, element, element))
            return false;
    }
    return true;
}

static_assert(std::size(kElementOrder) == kElementCount && std::size(kSideOrder) == kSideCount);
static_assert(everywhere(kNetworkFieldOrder) && everywhere(kLockAllOrder), "a network field has no row");
static_assert(everywhere(kLockedCopyOrder) && everywhere(kLockedInterfaceOrder), "a locked field has no row");

template<std::size_t N>
TableView<FieldStep> view(const Steps<N> &steps)
{
    return {steps.step, steps.count};
}

template<class T, std::size_t N>
TableView<T> view(const T (&table)[N])
{
    return {table, N};
}

} // namespace

TableView<FieldStep> loadOrder(Element element)
{
    const TableView<FieldStep> orders[] = {view(kVideoLoad), view(kAudioLoad), view(kAncLoad)};
    static_assert(std::size(orders) == kElementCount);
    return orders[static_cast<int>(element)];
}

TableView<FieldStep> saveOrder(Element element)
{
    const TableView<FieldStep> orders[] = {view(kVideoSave), view(kAudioSave), view(kAncSave)};
    static_assert(std::size(orders) == kElementCount);
    return orders[static_cast<int>(element)];
}

TableView<FieldStep> networkFieldOrder()
{
    return view(kNetworkFieldOrder);
}

TableView<FieldStep> lockAllOrder()
{
    return view(kLockAllOrder);
}

TableView<FieldStep> lockedCopyOrder()
{
    return view(kLockedCopyOrder);
}

TableView<FieldStep> lockedInterfaceOrder()
{
    return view(kLockedInterfaceOrder);
}

TableView<Element> elementOrder()
{
    return view(kElementOrder);
}

TableView<Side> sideOrder()
{
    return view(kSideOrder);
}
