// SPDX-License-Identifier: MIT
// Changing: set and unset, one by one or as a batch from standard input.
#include "corvelctl/changes.h"
#include "corvelctl/context.h"
#include "corvelctl/families.h"
#include "ops/batch.h"
#include "ops/inputfile.h"

namespace {

struct SetOptions {
    std::string place;
    std::vector<std::string> words;
    bool force = false;
    bool all = false;

    ops::Rules rules() const { return {force ? ops::Foreign::Allow : ops::Foreign::Refuse, force}; }
    QByteArrayList list() const
    {
        QByteArrayList list;
        for (const std::string &word : words)
            list.append(bytes(word));
        return list;
    }
    QByteArray label(const char *command) const
    {
        return ops::batchLabel(QByteArrayList{command, bytes(place)} + list());
    }
};

int set(Context &context, const SetOptions &options)
{
    const bool lines = options.place == "-";
    if (lines != options.words.empty())
        return context.usage("set needs a place and WORD=VALUE, or - for lines of both from standard input");
    const auto text = lines ? ops::readInput("-") : ops::Outcome<QByteArray>(QByteArray());
    if (!text)
        return context.fail(text.failure());
    return applyDraft(context, options.label("set"), Ask::Never, [&](ops::Draft &draft) {
        return lines ? ops::setLines(*text, options.rules(), draft)
                     : ops::setWords(bytes(options.place), options.list(), options.rules(), draft);
    });
}

int unset(Context &context, const SetOptions &options)
{
    if (options.words.empty() != options.all)
        return context.usage("unset needs the names of values, or --all for everything of the place");
    return applyDraft(context, options.label("unset"), Ask::Never, [&](ops::Draft &draft) {
        return options.all ? ops::unsetPlace(bytes(options.place), draft)
                           : ops::unsetWords(bytes(options.place), options.list(), options.rules(), draft);
    });
}

void declareSet(Command &command, SetOptions &options)
{
    command
        .option("place", options.place,
                "CHANNELS[/ELEMENT[/FLOWS]] such as 2/video, 0-7/audio/*, server; - for lines")
        .required();
    command.option("assignments", options.words, "WORD=VALUE; IP:PORT sets an address and its port");
    command.flag("--force", options.force,
                 "Also names of a site's own (NAME=text, NAME:=number) and channels beyond the server's");
}

void declareUnset(Command &command, SetOptions &options)
{
    command.option("place", options.place, "CHANNELS[/ELEMENT[/FLOWS]], server, or a key path").required();
    command.option("words", options.words, "Fields such as rx.dst, or value names");
    command.flag("--all", options.all, "Every value of the place");
    command.flag("--force", options.force, "Also names of a site's own");
}

} // namespace

void addChangeCommands(Command &app, Context &context)
{
    addCommand<SetOptions>(app, context, "set", "Change values: all of them, or none when one is wrong",
                           "corvelctl set 2/video rx.dst=239.20.2.1:20000 rx.use=dst,dst-port", declareSet,
                           set);
    addCommand<SetOptions>(app, context, "unset", "Delete values",
                           "corvelctl unset 2/video rx.src rx.src-port", declareUnset, unset);
}
