// SPDX-License-Identifier: MIT
// Settings files of the dialog: ipp export, import and check.
#include "corvelctl/changes.h"
#include "corvelctl/families.h"
#include "ops/inputfile.h"
#include "ops/settings.h"

namespace {

struct IppOptions {
    std::string file;
    int flows = -1;
};

void noteAll(const Context &context, const QByteArray &head, const QByteArrayList &notes)
{
    for (const QByteArray &note : notes)
        context.out.note(head + note);
}

int exportFile(Context &context, const IppOptions &options)
{
    return withValues(context, [&](const ops::Store &, const ops::Snapshot &values) -> int {
        context.out.begin("");
        const auto written =
            ops::writeOutput(bytes(options.file), ops::exportSettings(values, options.flows));
        if (!written)
            return context.fail(written.failure());
        noteAll(context, "a settings file does not carry ", ops::settingsLosses(values));
        return Done;
    });
}

int importText(Context &context, const QByteArray &file, const QByteArray &text)
{
    return withValues(context, [&](ops::Store &store, const ops::Snapshot &values) -> int {
        ops::Draft draft(values);
        const auto read = ops::importSettings(text, draft);
        if (!read)
            return context.usage(file + ": " + read.failure().text);
        noteAll(context, file + ", ", read->notes);
        return applyChanges(context, store, draft.changes(),
                            "Load File " + file.mid(file.lastIndexOf('/') + 1));
    });
}

int importFile(Context &context, const IppOptions &options)
{
    const auto text = ops::readInput(bytes(options.file));
    return text ? importText(context, bytes(options.file), *text) : context.fail(text.failure());
}

// What the dialog would make of the file, without a store.
int check(Context &context, const IppOptions &options)
{
    const auto text = ops::readInput(bytes(options.file));
    if (!text)
        return context.fail(text.failure());
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    const auto read = ops::importSettings(*text, draft);
    if (!read)
        return context.usage(bytes(options.file) + ": " + read.failure().text);
    for (const QByteArray &note : read->notes) {
        context.out.item([&] { return Json{{"note", ops::jsonText(note)}}; });
        context.out.line(printable(note));
    }
    context.out.note(counted(static_cast<std::size_t>(read->values), "value") + " for " +
                     counted(static_cast<std::size_t>(read->channels), "channel"));
    return read->notes.isEmpty() ? Done : Found;
}

void declareFile(Command &command, IppOptions &options)
{
    command.option("file", options.file, "The settings file; - is standard input or output").required();
}

void declareExport(Command &command, IppOptions &options)
{
    declareFile(command, options);
    command
        .option("--flows", options.flows, "Audio flows per channel in the file; enough for all when left out")
        .within(0, 8);
}

} // namespace

void addIppCommands(Command &app, Context &context)
{
    Command ipp = app.addGroup("ipp", "Settings files of the dialog");
    addCommand<IppOptions>(ipp, context, "export", "Write a settings file, as Save File does",
                           "corvelctl ipp export site.ipp", declareExport, exportFile);
    addCommand<IppOptions>(ipp, context, "import", "Read a settings file, as Load File does",
                           "corvelctl ipp import site.ipp --dry-run", declareFile, importFile);
    addCommand<IppOptions>(ipp, context, "check", "Say what Load File would leave out or read otherwise",
                           "corvelctl ipp check site.ipp", declareFile, check);
}
