// SPDX-License-Identifier: MIT
//
// Channels in the dialog's words, for the command show.
#ifndef CORVELCTL_SHOWTEXT_H
#define CORVELCTL_SHOWTEXT_H

#include "corvelctl/output.h"
#include "ops/place.h"
#include "ops/snapshot.h"

// All channels, one per line.
void showTable(Output &out, const ops::Snapshot &snapshot);

// A channel, an element, a flow, the server, or the values of a path. Of several places, each says its
// channel.
void showPlace(Output &out, const ops::Snapshot &snapshot, const ops::Place &place, bool several);

#endif
