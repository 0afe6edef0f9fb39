// SPDX-License-Identifier: MIT
//
// Where a value belongs, as people write it: "server", "2", "2/video", "2/audio", "2/audio/3", "2/anc", or a
// key path of the store. Pure; any thread.
#ifndef CORVEL_OPS_PLACE_H
#define CORVEL_OPS_PLACE_H

#include "channel/channelkeys.h"
#include "ops/outcome.h"

#include <optional>
#include <vector>

namespace ops {

constexpr int kNoFlow = -1;
constexpr int kSingleFlow = kFlowCount; // the values without a number, which single-flow mode uses

struct Place {
    int channel = -1; // below 0: the server, or the path
    std::optional<Element> element;
    int flow = kNoFlow;
    QByteArray path; // a key path given as such
};

bool operator==(const Place &left, const Place &right);

// "2/audio/3", "2/audio/single", "server", or the path.
QByteArray placeText(const Place &place);

// The part behind the channel: "", "video", "audio/3".
QByteArray elementText(const Place &place);

Outcome<Place> parsePlace(const QByteArray &text);

// The same with several channels and flows: "0-7/video", "1,3", "*/audio/*". "*" stands for channels 0 to
// channels - 1. In order, each once.
Outcome<std::vector<Place>> parsePlaces(const QByteArray &text, int channels);

// "1-7", "1,3,5", "*": channel numbers in the order given, each once, below kMaxChannels.
Outcome<std::vector<int>> parseNumbers(const QByteArray &text, int count);

// The key path of a channel's values, and the channel that a key path belongs to (-1: none).
QByteArray channelPath(int channel);
int channelOfPath(const QByteArray &path);

} // namespace ops

#endif
