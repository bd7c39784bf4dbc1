// The transport under the frames: send one, wait for its reply, take it. The program is always the
// master and at most one frame is outstanding. Nothing is sent twice and nothing flushes the
// receive queue but a read.
#pragma once

#include "platform/bytes.h"

#include <cstdint>

namespace modFunc {

inline constexpr int replyTimeoutMs = 1000;

// Marks the link as in use, by discovery or by a run, for as long as it lives. While it is, the
// main window takes no input and no other use begins: each asks LinkInUse() first, whoever calls
// it.
class LinkUse {
public:
    LinkUse();
    ~LinkUse();
    LinkUse(const LinkUse&) = delete;
    LinkUse& operator=(const LinkUse&) = delete;
};
bool LinkInUse();

// Tick of totmr: sets TimedOut and stops the timer, which is thus a one-shot.
void totmr_Timer();

// Waits, yielding, until at least RxExpected bytes wait on the port or replyTimeoutMs have passed
// since the call. The bytes are not read; stale ones count like fresh ones. On return
//   exactly RxExpected bytes wait: totmr is stopped;
//   more wait: totmr still runs and will set TimedOut later unless it is armed anew;
//   fewer wait: TimedOut is true.
// A last byte that comes in the same turn as the tick leaves TimedOut true.
void WaitReply();

// Sends `frame` as TxFrame, sets RxExpected and waits for the reply, which stays on the port.
void SendAndWait(Bytes frame, std::int16_t replyBytes);

// RxText := all that waits on the port, in place of what it held.
void ReadReply();
// The same behind what RxText holds.
void ReadReplyTail();

// SendAndWait, then ReadReply: the exchange of every frame whose time-out is not looked at before
// the reply is read.
void Exchange(Bytes frame, std::int16_t replyBytes);

} // namespace modFunc
