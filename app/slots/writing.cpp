// SPDX-License-Identifier: MIT
//
// Slots, writing: the one way from the user to the store. What is written is the caller's business.
#include "app/dialog/private.h"
#include "channel/channelstore.h"

void QCorvelPrivate::write(const std::function<void()> &values)
{
    values();
    commitStore();
}
