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
        const int code = context.writeFile(bytes(options.file), ops::exportSettings(values, options.flows));
        if (code == Done)
            noteAll(context, "a settings file does not carry ", ops::settingsLosses(values));
        return code;
    });
}

// What the file says does not depend on the store, what it changes does.
ops::Outcome<ops::SettingsRead> readAlone(const IppOptions &options, const QByteArray &text)
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    const auto read = ops::importSettings(text, draft);
    return read ? read : ops::wrong(bytes(options.file) + ": " + read.failure().text);
}

int importFile(Context &context, const IppOptions &options)
{
    const QByteArray file = bytes(options.file);
    const auto text = ops::readInput(file);
    if (!text)
        return context.fail(text.failure());
    const auto read = readAlone(options, *text);
    if (!read)
        return context.fail(read.failure());
    noteAll(context, file + ", ", read->notes);
    return applyDraft(context, fileLabel("Load File", file), Ask::Never,
                      [&](ops::Draft &draft) -> ops::Outcome<ops::Done> {
                          const auto taken = ops::importSettings(*text, draft);
                          return taken ? ops::Outcome<ops::Done>(ops::Done()) : taken.failure();
                      });
}

// What the dialog would make of the file, without a store.
int check(Context &context, const IppOptions &options)
{
    const auto text = ops::readInput(bytes(options.file));
    if (!text)
        return context.fail(text.failure());
    const auto read = readAlone(options, *text);
    if (!read)
        return context.fail(read.failure());
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
