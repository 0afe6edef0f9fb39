#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the golden files of the session description and settings file tests.

make_golden.py DATA-FOLDER

A second, independent statement of what the writers put out: plain templates, nothing shared with the
C++ code. Run it again only when the formats themselves change, and read the difference.

sdp/<kind>.golden        readable texts, each below a line "==== <case>"
sdp/matrix.sha256        one digest per kind and flow count over all 16 box and 3 clock combinations
settings/<c>x<f>.ipp     c channels, f flows
"""
import hashlib
import pathlib
import sys

# ---------------------------------------------------------------- session descriptions

HEADER = "v=0\no=- 1700000000123456 0 IN IP4 192.168.10.2\ns=Halvect IP Config\nt=0 0\n"
CLOCK = {
    "none": "",
    "ptp": "a=ts-refclk:ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127\na=mediaclk:direct=0\n",
    "mac": "a=ts-refclk:localmac=AC-DE-48-23-45-67\na=mediaclk:direct=0\n",
}
FMTP = (
    "a=fmtp:{} width=1920; height=1080; TP=2110TPNL; exactframerate=60000/1001; PM=2110GPM; "
    "SSN=ST2110-20:2017; sampling=YCbCr-4:2:2; depth=10; colorimetry=BT709;\n"
)
RATE = "a=framerate:60000/1001\n"


def section(side, media, port, payload, destination, source, lines, boxes, clock):
    src, dst = (boxes & 8, boxes & 4) if side == "rx" else (boxes & 2, boxes & 1)
    text = f"m={media} {port} RTP/AVP {payload}\nc=IN IP4 {destination}\n"
    if src:
        text += f"a=source-filter: incl IN IP4 {destination if dst else '*'} {source}\n"
    text += lines + CLOCK[clock]
    return text + ("a=recvonly\n" if side == "rx" else "a=sendonly\n")


def video(side, lines, boxes, clock):
    if side == "rx":
        return section(side, "video", 20000, 100, "239.1.1.1", "192.168.20.1", lines, boxes, clock)
    return section(side, "video", 30000, 101, "239.2.1.1", "192.168.10.1", lines, boxes, clock)


def audio(side, n, boxes, clock):
    if side == "rx":
        lines = "a=rtpmap:96 L24/48000/1\na=ptime:1\n"
        return section(side, "audio", f"2010{n}", 96, f"239.1.2.10{n}", f"192.168.21.10{n}", lines, boxes, clock)
    lines = "a=rtpmap:97 L24/48000/1\na=ptime:4\n"
    return section(side, "audio", f"3010{n}", 97, f"239.2.2.10{n}", f"192.168.11.10{n}", lines, boxes, clock)


def anc(side, media, boxes, clock):
    if side == "rx":
        lines = "a=rtpmap:98 smpte291/90000\n"
        return section(side, media, 20300, 98, "239.1.3.1", "192.168.20.3", lines, boxes, clock)
    lines = "a=rtpmap:99 smpte291/90000\n"
    return section(side, media, 30300, 99, "239.2.3.1", "192.168.10.3", lines, boxes, clock)


def element_video_rx(_flows, boxes, clock):
    return HEADER + video("rx", "a=rtpmap:100 raw/90000\n" + FMTP.format(100), boxes, clock)


def element_video_tx(_flows, boxes, clock):
    return HEADER + video("tx", RATE + FMTP.format(101) + "a=rtpmap:101 raw/90000\n", boxes, clock)


def element_audio(flows, boxes, clock):
    return HEADER + "".join(audio(side, n, boxes, clock) for n in range(flows) for side in ("rx", "tx"))


def element_anc(_flows, boxes, clock):
    return HEADER + anc("rx", "video", boxes, clock) + anc("tx", "video", boxes, clock)


def file_rx(flows, boxes, clock):
    text = HEADER + video("rx", "a=rtpmap:100 raw/90000\n" + RATE + FMTP.format(100), boxes, clock)
    return text + "".join(audio("rx", n, boxes, clock) for n in range(flows)) + anc("rx", "data", boxes, clock)


def file_tx(flows, boxes, clock):
    text = HEADER + video("tx", "a=rtpmap:101 raw/90000\n" + FMTP.format(101), boxes, clock)
    return text + "".join(audio("tx", n, boxes, clock) for n in range(flows)) + anc("tx", "data", boxes, clock)


KINDS = {
    "element-video-rx": (element_video_rx, False),
    "element-video-tx": (element_video_tx, False),
    "element-audio": (element_audio, True),
    "element-anc": (element_anc, False),
    "file-rx": (file_rx, True),
    "file-tx": (file_tx, True),
}


def cases(has_flows):
    for boxes in range(16):
        for clock in CLOCK:
            yield 1, boxes, clock
    if has_flows:
        for flows in (0, 2, 3, 4, 5, 6, 7, 8):
            yield flows, 12, "ptp"


def write_sdp(folder):
    folder.mkdir(parents=True, exist_ok=True)
    digests = []
    for kind, (write, has_flows) in KINDS.items():
        texts = [f"==== flows={f} boxes={b:04b} clock={c}\n{write(f, b, c)}" for f, b, c in cases(has_flows)]
        (folder / f"{kind}.golden").write_bytes("".join(texts).encode())
        for flows in range(9):
            whole = "".join(write(flows, boxes, clock) for boxes in range(16) for clock in CLOCK)
            digests.append(f"{kind} {flows} {hashlib.sha256(whole.encode()).hexdigest()}\n")
    (folder / "matrix.sha256").write_text("".join(digests))


# ---------------------------------------------------------------- settings files

# T: a text, shown as <stored name>#<channel>; N: a number, made of the stored name and the channel.
BEFORE = """ClockGrandMaster T|SfpTopIPAddress T|SfpBottomIPAddress T|SfpSubnetMask T|SfpGateway T
ReceiveAudChannels N|ReceiveAudTotalChannels N|TransmitAudChannels N|TransmitAudTotalChannels N
TransmitIp T|TransmitDestinationIp T|TransmitSourcePort N|TransmitRemotePort N|TransmitInterface T|TransmitFlags N"""
TX_FLOW = "TransmitAudIp T|TransmitAudDestinationIp T|TransmitAudSourcePort N|TransmitAudRemotePort N|TransmitAudFlags N"
BETWEEN = """TransmitAudInterface=TransmitInterface T|TransmitAudPacketLength N|TransmitAncIp T
TransmitAncDestinationIp T|TransmitAncSourcePort N|TransmitAncRemotePort N|TransmitAncInterface T|TransmitAncFlags N
VideoType N|ClockType N|ClockSettings N|ClockDomain N|ReceiveSourceIp T|ReceiveDestinationIp T|ReceiveSourcePort N
ReceiveDestinationPort N|ReceiveInterface T|ReceiveFlags N"""
RX_FLOW = "ReceiveAudSourceIp T|ReceiveAudDestinationIp T|ReceiveAudSourcePort N|ReceiveAudDestinationPort N|ReceiveAudFlags N"
AFTER = """ReceiveAudInterface=ReceiveInterface T|ReceiveAudPacketLength N|ReceiveAncSourceIp T
ReceiveAncDestinationIp T|ReceiveAncSourcePort N|ReceiveAncDestinationPort N|ReceiveAncInterface T|ReceiveAncFlags N"""


def stored(name, form, channel):
    if form == "T":
        return f"{name}#{channel}"
    return str(sum((i + 1) * b for i, b in enumerate(name.encode())) * 1000 + channel)


def group(rows, channel, flow=""):
    text = ""
    for row in rows.replace("\n", "|").split("|"):
        name, form = row.split(" ")
        key, _, source = name.partition("=")
        text += f"{key}{flow}={stored((source or key) + str(flow), form, channel)}\n"
    return text


def settings(channels, flows):
    text = "[HalvectIpConfig]\n;Network Config fileName=Quorlex\nVersion=1.0\n\n"
    for c in range(channels):
        text += f"[channel{c}]\nnmosoverride=0\n" + group(BEFORE, c)
        text += "".join(group(TX_FLOW, c, f) for f in range(flows)) + group(BETWEEN, c)
        text += "".join(group(RX_FLOW, c, f) for f in range(flows)) + group(AFTER, c) + "\n"
    return text


def write_settings(folder):
    folder.mkdir(parents=True, exist_ok=True)
    for channels in (1, 4, 12):
        for flows in (1, 8):
            (folder / f"{channels}x{flows}.ipp").write_text(settings(channels, flows))


if __name__ == "__main__":
    data = pathlib.Path(sys.argv[1])
    write_sdp(data / "sdp")
    write_settings(data / "settings")
