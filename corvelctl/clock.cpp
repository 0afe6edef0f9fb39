// SPDX-License-Identifier: MIT
// The clock: ptp and ptp doctor.
#include "channel/valuenames.h"
#include "corvelctl/context.h"
#include "corvelctl/families.h"
#include "corvelctl/findingsout.h"
#include "corvelctl/ptpsight.h"
#include "ops/batch.h"
#include "ops/place.h"
#include "ops/vocabulary.h"

namespace {

struct PtpOptions {
    int channel = 0;
    std::string interface, grandmaster;
    int domain = -1;
    int seconds = 8;
};

// What was typed and can be no address and no identity would only be waited for in vain.
ops::Outcome<ops::Done> checkTyped(const PtpOptions &options)
{
    const auto interface = ops::fromWords(ops::Kind::Interface, bytes(options.interface));
    if (!interface)
        return ops::wrong("--interface: " + interface.failure().text);
    const auto grandmaster = ops::fromWords(ops::Kind::GrandMaster, bytes(options.grandmaster));
    return grandmaster ? ops::Outcome<ops::Done>(ops::Done())
                       : ops::wrong("--gm: " + grandmaster.failure().text);
}

// What the channel is set up for, as far as the command line does not say otherwise.
ops::Outcome<PtpWish> wishOf(const Context &context, const PtpOptions &options)
{
    const auto typed = checkTyped(options);
    if (!typed)
        return typed.failure();
    const auto store = context.open();
    if (!store)
        return store.failure();
    const auto values = store->read();
    if (!values)
        return values.failure();
    const auto known = ops::checkChannel(options.channel, *values);
    if (!known)
        return known.failure();
    PtpWish wish{ops::ptpTargetOf(*values, options.channel), options.seconds};
    if (!options.interface.empty())
        wish.target.interface = bytes(options.interface);
    if (options.domain >= 0)
        wish.target.domain = static_cast<quint32>(options.domain);
    if (!options.grandmaster.empty())
        wish.target.grandmaster = bytes(options.grandmaster);
    return wish;
}

template<class T>
Json known(const std::optional<T> &value)
{
    return value ? Json(*value) : Json(nullptr);
}

Json masterItem(const ops::PtpMaster &master)
{
    return {{"domain", master.domain},
            {"grandmaster", jsonText(master.grandmaster)},
            {"interface", jsonText(master.interface)},
            {"priority1", master.priority1},
            {"priority2", master.priority2},
            {"clock_class", master.clockClass},
            {"clock_accuracy", master.clockAccuracy},
            {"steps_removed", master.stepsRemoved},
            {"age_ms", master.ageMs}};
}

Json viewItem(const PtpView &view)
{
    Json item{
        {"state", clockStateWord(view.sight.state)}, {"reason", jsonText(view.sight.reason)},
        {"wanted_domain", view.sight.domain},        {"wanted_grandmaster", jsonText(view.sight.wanted)},
        {"domain", jsonText(view.domain)},           {"grandmaster", jsonText(view.grandmaster)},
        {"source_port", jsonText(view.sourcePort)},  {"interface", jsonText(view.address)},
        {"offset_ns", known(view.offsetNs)},         {"offset_age_ms", known(view.offsetAgeMs)},
        {"system_client", view.systemClient},        {"masters", Json::array()}};
    for (const ops::PtpMaster &master : view.sight.masters)
        item["masters"].push_back(masterItem(master));
    return item;
}

void printView(Output &out, const PtpView &view)
{
    out.item([&view] { return viewItem(view); });
    const ops::PtpSight &sight = view.sight;
    const QByteArray state = clockStateWord(sight.state);
    out.line("state        " + state +
             (sight.reason.isEmpty() ? QByteArray() : ": " + printable(sight.reason)));
    out.line("wanted       domain " + QByteArray::number(sight.domain) + ", grandmaster " +
             (sight.wanted.isEmpty() ? QByteArray("any") : printable(sight.wanted)));
    if (!view.grandmaster.isEmpty())
        out.line("grandmaster  " + view.grandmaster + " in domain " + view.domain + " on " + view.address);
    if (view.offsetNs)
        out.line("offset       " + QByteArray::number(static_cast<qlonglong>(*view.offsetNs)) + " ns");
    for (const ops::PtpMaster &master : sight.masters)
        out.line("heard        " + master.grandmaster + " in domain " + QByteArray::number(master.domain) +
                 " on " + master.interface + ", clock class " + QByteArray::number(master.clockClass));
}

int ptp(Context &context, const PtpOptions &options)
{
    const auto wish = wishOf(context, options);
    if (!wish)
        return context.fail(wish.failure());
    const PtpView view = lookAtPtp(*wish, false);
    printView(context.out, view);
    return view.sight.state == ClockState::Locked ? Done : Found;
}

int doctor(Context &context, const PtpOptions &options)
{
    const auto wish = wishOf(context, options);
    if (!wish)
        return context.fail(wish.failure());
    const PtpView view = lookAtPtp(*wish, true);
    const ops::Findings findings = ops::examinePtp(view.sight);
    if (findings.empty())
        context.out.note(QByteArray("nothing is wrong: ") + clockStateWord(view.sight.state));
    return showFindings(context, findings);
}

void declarePtp(Command &command, PtpOptions &options)
{
    command
        .option("--channel", options.channel,
                "Take interface, domain and grandmaster from this channel, 0 when left out")
        .within(0, 65535);
    command.option("--interface", options.interface, "Address of the interface; 0.0.0.0 for all");
    command.option("--domain", options.domain, "PTP domain").within(0, static_cast<int>(kHighestPtpDomain));
    command.option("--gm", options.grandmaster, "Identity of the grandmaster");
    command.option("--wait", options.seconds, "Seconds in which a master may be heard, 8 when left out")
        .within(0, 600);
}

} // namespace

void addClockCommands(Command &app, Context &context)
{
    Command command = addCommand<PtpOptions>(app, context, "ptp",
                                             "Print what the PTP client sees; exit status 1 unless locked",
                                             "corvelctl ptp --domain 127", declarePtp, ptp);
    addCommand<PtpOptions>(command, context, "doctor", "Say what is wrong with PTP and what to do",
                           "corvelctl ptp doctor --wait 5", declarePtp, doctor);
}
