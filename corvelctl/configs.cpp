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

// A dry run says what would be done; the name is looked at when it is done.
template<class Work>
int work(Context &context, const QByteArray &what, const Work &change)
{
    if (context.dryRun) {
        context.out.note("would " + what);
        return Done;
    }
    const ops::Outcome<ops::Done> done = change();
    return done ? Done : context.fail(done.failure());
}

int newOne(Context &context, const NameOptions &options)
{
    const QByteArray name = bytes(options.name);
    return work(context, "make " + name, [&] { return ops::newConfiguration(name); });
}

int copy(Context &context, const NameOptions &options)
{
    const QByteArray from = bytes(options.name), to = bytes(options.other);
    return work(context, "copy " + from + " to " + to, [&] { return ops::copyConfiguration(from, to); });
}

int rename(Context &context, const NameOptions &options)
{
    const QByteArray from = bytes(options.name), to = bytes(options.other);
    return work(context, "rename " + from + " to " + to, [&] { return ops::renameConfiguration(from, to); });
}

int remove(Context &context, const NameOptions &options)
{
    const QByteArray name = bytes(options.name);
    const bool ask = !context.dryRun && ops::hasConfiguration(name);
    if (ask && !agreed(context, "Delete configuration \"" + name + "\" for good?"))
        return Usage;
    return work(context, "delete " + name, [&] { return ops::deleteConfiguration(name); });
}

int use(Context &context, const NameOptions &options)
{
    const QByteArray name = bytes(options.name);
    return work(context, "let the server use " + name, [&] { return ops::useConfiguration(name); });
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
