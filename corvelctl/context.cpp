// SPDX-License-Identifier: MIT
#include "corvelctl/context.h"

#include "ops/configurations.h"
#include "ops/inputfile.h"

#include <algorithm>

bool readsInputTwice(const std::vector<std::string> &files)
{
    return std::count(files.begin(), files.end(), "-") > 1;
}

ops::Outcome<ops::Store> Context::open() const
{
    if (configuration.empty())
        return ops::Store();
    const QByteArray name = bytes(configuration);
    if (!ops::hasConfiguration(name))
        return ops::noSuchConfiguration(name);
    return ops::Store::open(name);
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

int Context::writeFile(const QByteArray &path, const QByteArray &content)
{
    out.begin("");
    const bool only = dryRun && path != "-";
    const auto written = only ? ops::canWrite(path) : ops::writeOutput(path, content);
    if (!written)
        return fail(written.failure());
    if (only)
        out.note("would write " + path);
    return Done;
}
