// SPDX-License-Identifier: MIT
#include "corvelctl/context.h"

ops::Outcome<ops::Store> Context::open() const
{
    if (configuration.empty())
        return ops::Store();
    return ops::Store::open(bytes(configuration));
}

int Context::fail(const ops::Failure &failure) const
{
    Output::error(failure.text);
    return failure.kind == ops::Failure::Input ? Usage : StoreFailed;
}

int Context::usage(const QByteArray &message) const
{
    return fail(ops::wrong(message));
}

int Context::nothing(const QByteArray &message) const
{
    out.note(message);
    return failIfNone ? Nothing : Done;
}
