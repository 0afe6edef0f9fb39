// SPDX-License-Identifier: MIT
// Session descriptions: sdp check, fix, load and write.
#include "channel/channelstore.h"
#include "corvelctl/changes.h"
#include "corvelctl/families.h"
#include "corvelctl/findingsout.h"
#include "ops/batch.h"
#include "ops/inputfile.h"
#include "ops/sdpdescribe.h"
#include "ops/sdpfix.h"
#include "ops/sdpload.h"
#include "ops/streamrate.h"

#include "rkos.h"

#include <QFileInfo>

namespace {

// ---------------------------------------------------------------------------------- check and fix

// What a text cannot say of itself: said by the user, or read from a channel.
struct FactOptions {
    bool interlaced = false;
    int audioChannels = 0;
    int channel = -1;
};

void declareFacts(Command &command, FactOptions &options)
{
    command.flag("--interlaced", options.interlaced, "The pictures are interlaced");
    command.option("--audio-channels", options.audioChannels, "Channels in each audio flow").within(1, 64);
    command.option("--of", options.channel, "Take both from this channel's settings")
        .within(0, kMaxChannels - 1);
}

ops::Outcome<ops::SdpFacts> factsOf(const Context &context, const FactOptions &options)
{
    ops::SdpFacts facts{options.interlaced, options.audioChannels};
    if (options.channel < 0)
        return facts;
    const auto store = context.open();
    if (!store)
        return store.failure();
    const QByteArray path = ops::channelPath(options.channel);
    const auto snapshot = store->read();
    if (!snapshot)
        return snapshot.failure();
    const auto known = ops::checkChannel(options.channel, *snapshot);
    if (!known)
        return known.failure();
    const VideoFormat *format = findVideoFormat(snapshot->number(path, ChannelValue::SignalFormat));
    const ChannelKey *count = findChannelKey(Element::Audio, Side::Send, Field::Channels);
    facts.interlaced = facts.interlaced || (format && ops::isInterlaced(*format));
    if (facts.channels == 0)
        facts.channels = static_cast<int>(qMin(64u, snapshot->number(path, count->name)));
    return facts;
}

struct CheckOptions {
    std::vector<std::string> files;
    FactOptions facts;
    bool junit = false;
};

int check(Context &context, const CheckOptions &options)
{
    if (readsInputTwice(options.files))
        return context.usage(kInputOnce);
    const auto facts = factsOf(context, options.facts);
    if (!facts)
        return context.fail(facts.failure());
    std::vector<ops::SdpText> texts;
    for (const std::string &file : options.files) {
        const auto text = ops::readInput(bytes(file));
        if (!text)
            return context.fail(text.failure());
        texts.push_back(ops::parseSdp(*text, bytes(file)));
    }
    const ops::Findings findings = ops::checkSdp(texts, *facts);
    if (!options.junit)
        return showFindings(context, findings);
    return showJunit(context, findings, "sdp check", ops::sdpRuleNames());
}

void declareCheck(Command &command, CheckOptions &options)
{
    command.option("files", options.files, "The descriptions; - is standard input").required();
    declareFacts(command, options.facts);
    command.flag("--junit", options.junit, "JUnit XML as result, one test case per rule");
}

struct FixOptions {
    std::string file, output;
    int timeToLive = 64;
    std::string ptp, mac, packetTime, senderType;
    FactOptions facts;
};

// Null, or what is wrong with the two names: nothing is ever changed in place.
const char *nameTrouble(const FixOptions &options)
{
    const QString from = QFileInfo(QFile::decodeName(bytes(options.file))).canonicalFilePath();
    const QString to = QFileInfo(QFile::decodeName(bytes(options.output))).canonicalFilePath();
    const bool same =
        options.output != "-" && (options.output == options.file || (!to.isEmpty() && from == to));
    return same ? "the corrected copy needs a name of its own" : nullptr;
}

ops::SdpFixOptions fixOptions(const FixOptions &given, const ops::SdpFacts &facts)
{
    ops::SdpFixOptions options;
    options.timeToLive = given.timeToLive;
    options.ptp = bytes(given.ptp);
    options.localMac = bytes(given.mac);
    options.packetTime = bytes(given.packetTime);
    options.senderType = bytes(given.senderType);
    options.facts = facts;
    return options;
}

void showFixes(Context &context, const ops::SdpFixed &fixed, bool toStandardOutput)
{
    for (const ops::SdpChange &change : fixed.changes) {
        context.out.item([&] {
            return Json{{"line", change.line},
                        {"before", ops::jsonText(change.before)},
                        {"after", ops::jsonText(change.after)}};
        });
    }
    for (const QByteArray &line : ops::sdpChangesText(fixed).split('\n')) {
        if (!line.isEmpty() && toStandardOutput)
            context.out.note(line);
        else if (!line.isEmpty())
            context.out.line(line);
    }
}

// What the check still says of the copy, on standard error: only the sender's people can mend it.
int showRest(Context &context, const ops::SdpFixed &fixed, const ops::SdpFacts &facts)
{
    ops::SdpText text = ops::parseSdp(ops::sdpBytes(fixed.text), fixed.text.file);
    const ops::Findings left = ops::checkSdp({text}, facts);
    for (const ops::Finding &finding : left) {
        if (finding.severity != ops::Severity::Note)
            context.out.note("left: " + ops::findingsText({finding}).split('\n').first());
    }
    return ops::hasTrouble(left) ? Found : Done;
}

ops::Outcome<ops::Done> writeCopy(const Context &context, const FixOptions &options,
                                  const ops::SdpFixed &fixed)
{
    if (context.dryRun)
        return ops::canWrite(bytes(options.output));
    return ops::writeOutput(bytes(options.output), ops::sdpBytes(fixed.text));
}

int fix(Context &context, const FixOptions &options)
{
    if (const char *trouble = nameTrouble(options))
        return context.usage(trouble);
    const auto facts = factsOf(context, options.facts);
    if (!facts)
        return context.fail(facts.failure());
    const auto text = ops::readInput(bytes(options.file));
    if (!text)
        return context.fail(text.failure());
    const ops::SdpText given = ops::parseSdp(*text, bytes(options.file));
    if (given.media.empty())
        return context.usage(bytes(options.file) + " describes no stream: there is nothing to correct");
    const ops::SdpFixed fixed = ops::fixSdp(given, fixOptions(options, *facts));
    const bool toStandardOutput = options.output == "-" && !context.dryRun;
    if (toStandardOutput)
        context.out.begin("");
    showFixes(context, fixed, toStandardOutput);
    const auto written = writeCopy(context, options, fixed);
    if (!written)
        return context.fail(written.failure());
    const int left = showRest(context, fixed, *facts);
    const bool nothing = fixed.changes.empty() && !fixed.lineEnds;
    return nothing && left == Done ? context.nothing("nothing to correct") : left;
}

void declareFix(Command &command, FixOptions &options)
{
    command.option("file", options.file, "The description; - is standard input").required();
    command.option("-o,--output", options.output, "The corrected copy; - is standard output").required();
    command.option("--ttl", options.timeToLive, "Time to live of groups without one").within(0, 255);
    const Argument ptp =
        command.option("--ptp", options.ptp, "Clock of streams without one: IDENTITY[:DOMAIN] or traceable");
    command.option("--mac", options.mac, "The same: the sender's Ethernet address").notTogetherWith(ptp);
    command.option("--ptime", options.packetTime, "Packet time in ms of audio without one")
        .oneOf({"0.125", "0.25", "0.333", "1", "4"});
    command.option("--tp", options.senderType, "Sender type of video without one")
        .oneOf({"2110TPN", "2110TPNL", "2110TPW"});
    declareFacts(command, options.facts);
}

// ---------------------------------------------------------------------------------- load and write

struct LoadOptions {
    std::string file;
    int channel = 0;
};

void showNotes(Context &context, const ops::SdpLoadPlan &plan, const QByteArray &file)
{
    for (const ops::SdpLoadNote &note : plan.notes) {
        context.out.item([&] {
            return Json{{"line", note.line}, {"warning", note.warning}, {"note", ops::jsonText(note.text)}};
        });
        context.out.note(file + ':' + QByteArray::number(note.line) + (note.warning ? ": warning: " : ": ") +
                         note.text);
    }
}

int load(Context &context, const LoadOptions &options)
{
    const auto text = ops::readInput(bytes(options.file));
    if (!text)
        return context.fail(text.failure());
    auto store = context.open();
    if (!store)
        return context.fail(store.failure());
    const ops::SdpLoadPlan alone = ops::planSdpLoad(*text, ops::Snapshot(), options.channel);
    showNotes(context, alone, bytes(options.file));
    context.out.note(counted(static_cast<std::size_t>(alone.values), "value") +
                     " in the text; locks of the dialog do not hold here");
    const auto plan = [&](const ops::Snapshot &now) -> ops::Outcome<ops::Changes> {
        const auto known = ops::checkChannel(options.channel, now);
        if (!known)
            return known.failure();
        return ops::planSdpLoad(*text, now, options.channel).changes;
    };
    return applyPlan(context, *store, plan, fileLabel("Load File", bytes(options.file)));
}

void declareLoad(Command &command, LoadOptions &options)
{
    command.option("file", options.file, "The description; - is standard input").required();
    command.option("channel", options.channel, "The channel that takes the values")
        .required()
        .within(0, kMaxChannels - 1);
}

struct WriteOptions {
    std::string place, output = "-";
    std::string side = "tx";
    int flows = -1;
    bool noClock = false;
};

// The two names of a pair as the dialog makes them; a name without ".sdp" gets it first.
SdpFileNames pairNames(const std::string &output)
{
    QString name = QFile::decodeName(bytes(output));
    if (!name.endsWith(QLatin1String(".sdp")))
        name += QLatin1String(".sdp");
    return sdpFileNames(name);
}

int writePair(Context &context, const WriteOptions &options, const ops::SdpPair &pair)
{
    if (options.output == "-")
        return context.writeFile("-", (options.side == "rx" ? pair.rx : pair.tx).toUtf8());
    const SdpFileNames names = pairNames(options.output);
    const int code = context.writeFile(QFile::encodeName(names.rx), pair.rx.toUtf8());
    return code == Done ? context.writeFile(QFile::encodeName(names.tx), pair.tx.toUtf8()) : code;
}

int write(Context &context, const WriteOptions &options)
{
    const auto place = ops::parsePlace(bytes(options.place));
    if (!place)
        return context.fail(place.failure());
    if (place->channel < 0)
        return context.usage("name a channel, or CHANNEL/video, CHANNEL/audio or CHANNEL/anc");
    const auto store = context.open();
    if (!store)
        return context.fail(store.failure());
    const auto snapshot = store->read();
    if (!snapshot)
        return context.fail(snapshot.failure());
    const auto known = ops::checkChannel(place->channel, *snapshot);
    if (!known)
        return context.fail(known.failure());
    const ops::SdpDescription wanted{!options.noClock, options.flows, rkOSGetMicro()};
    return writePair(context, options, ops::describeChannel(*snapshot, *place, wanted));
}

void declareWrite(Command &command, WriteOptions &options)
{
    command.option("place", options.place, "CHANNEL or CHANNEL/ELEMENT").required();
    command.option("-o,--output", options.output,
                   "Write NAME.rx.sdp and NAME.tx.sdp instead of one to standard output");
    command.option("--side", options.side, "Which of the two goes to standard output").oneOf({"rx", "tx"});
    command.option("--flows", options.flows, "Audio flows; the channel's own number when left out")
        .within(0, kFlowCount);
    command.flag("--no-clock", options.noClock,
                 "Leave the clock lines out, as the dialog does with its box clear");
}

} // namespace

void addSdpCommands(Command &app, Context &context)
{
    Command sdp = app.addGroup("sdp", "Session descriptions of streams");
    addCommand<CheckOptions>(sdp, context, "check", "Say what a strict receiver refuses or misreads",
                             "corvelctl sdp check studio.sdp", declareCheck, check);
    addCommand<FixOptions>(sdp, context, "fix", "Write a corrected copy and tell every change",
                           "corvelctl sdp fix studio.sdp -o strict.sdp --ttl 32", declareFix, fix);
    addCommand<LoadOptions>(sdp, context, "load",
                            "Take addresses and ports into a channel, as Load File does",
                            "corvelctl sdp load studio.sdp 2 --dry-run", declareLoad, load);
    addCommand<WriteOptions>(sdp, context, "write", "Describe a channel as the dialog does",
                             "corvelctl sdp write 2/video -o camera", declareWrite, write);
}
