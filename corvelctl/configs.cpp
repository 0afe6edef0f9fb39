// SPDX-License-Identifier: MIT
// Named configurations: config list, new, copy, rename, delete, use.
#include "corvelctl/changes.h"
#include "corvelctl/families.h"
#include "ops/configurations.h"

namespace {

struct NoOptions {};

struct NameOptions {
    std::string name, other;
};

void declareNothing(Command &, NoOptions &) {}

void declareName(Command &command, NameOptions &options)
{
    command.option("name", options.name, "A configuration").required();
}

void declareTwoNames(Command &command, NameOptions &options)
{
    declareName(command, options);
    command.option("new-name", options.other, "The name of the new one").required();
}

int list(Context &context, const NoOptions &)
{
    const QByteArray used = ops::defaultConfiguration();
    for (const QByteArray &name : ops::configurationNames()) {
        context.out.item([&] { return Json{{"name", ops::jsonText(name)}, {"used", name == used}}; });
        context.out.line((name == used ? "* " : "  ") + printable(name));
    }
    return Done;
}

// A dry run says what would be done, and fails where that would fail. change(doing) does it.
template<class Work>
int work(Context &context, const QByteArray &what, const Work &change)
{
    const auto done = change(context.dryRun ? ops::Doing::Check : ops::Doing::Make);
    if (done && context.dryRun)
        context.out.note("would " + what);
    return done ? Done : context.fail(done.failure());
}

int newOne(Context &context, const NameOptions &options)
{
    const QByteArray name = bytes(options.name);
    return work(context, "make " + name,
                [&](ops::Doing doing) { return ops::newConfiguration(name, doing); });
}

int copy(Context &context, const NameOptions &options)
{
    const QByteArray from = bytes(options.name), to = bytes(options.other);
    return work(context, "copy " + from + " to " + to,
                [&](ops::Doing doing) { return ops::copyConfiguration(from, to, doing); });
}

int rename(Context &context, const NameOptions &options)
{
    const QByteArray from = bytes(options.name), to = bytes(options.other);
    return work(context, "rename " + from + " to " + to,
                [&](ops::Doing doing) { return ops::renameConfiguration(from, to, doing); });
}

int remove(Context &context, const NameOptions &options)
{
    const QByteArray name = bytes(options.name);
    const auto possible = ops::deleteConfiguration(name, ops::Doing::Check);
    if (!possible)
        return context.fail(possible.failure());
    if (!context.dryRun && !agreed(context, "Delete configuration \"" + name + "\" for good?"))
        return Usage;
    return work(context, "delete " + name,
                [&](ops::Doing doing) { return ops::deleteConfiguration(name, doing); });
}

int use(Context &context, const NameOptions &options)
{
    const QByteArray name = bytes(options.name);
    return work(context, "let the server use " + name,
                [&](ops::Doing doing) { return ops::useConfiguration(name, doing); });
}

} // namespace

void addConfigCommands(Command &app, Context &context)
{
    Command config = app.addGroup("config", "Named configurations");
    addCommand<NoOptions>(config, context, "list", "List them; * marks the one that the server uses",
                          "corvelctl config list", declareNothing, list);
    addCommand<NameOptions>(config, context, "new", "Make an empty one", "corvelctl config new night",
                            declareName, newOne);
    addCommand<NameOptions>(config, context, "copy", "Make a copy under a new name",
                            "corvelctl config copy default night", declareTwoNames, copy);
    addCommand<NameOptions>(config, context, "rename", "Give one another name",
                            "corvelctl config rename night late", declareTwoNames, rename);
    addCommand<NameOptions>(config, context, "delete", "Delete one", "corvelctl config delete late --yes",
                            declareName, remove);
    addCommand<NameOptions>(config, context, "use", "Let the server use one", "corvelctl config use night",
                            declareName, use);
}
