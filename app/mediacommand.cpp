// SPDX-License-Identifier: MIT
#include "app/mediacommand.h"

#include <utility>

namespace {

MediaHook &currentHook()
{
    static MediaHook hook;
    return hook;
}

} // namespace

int ipSetMode(MEDIACMD *command, int mode)
{
    const MediaHook hook = currentHook(); // a copy: the hook may put another one in place
    return hook && command ? hook(command, mode) : 0;
}

void setMediaHook(MediaHook hook)
{
    currentHook() = std::move(hook);
}
