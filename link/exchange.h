// The transport layer: sends a frame, waits for its reply and reads it. The program is always the
// master and at most one frame is outstanding. Nothing is sent twice, and only a read empties the
// receive queue.
#pragma once

#include "platform/bytes.h"

#include <cstdint>

namespace modFunc {

inline constexpr int replyTimeoutMs = 1000;

// Who exchanges frames with the programmer. Check LinkInUse() before becoming the user.
enum class LinkUser { Nobody, Discovery, Run };
LinkUser CurrentLinkUser();
inline bool LinkInUse() {
    return CurrentLinkUser() != LinkUser::Nobody;
}

// Makes `user` the link's user while this object exists. The main window takes no input meanwhile.
class LinkUse {
public:
    explicit LinkUse(LinkUser user);
    ~LinkUse();
    LinkUse(const LinkUse&) = delete;
    LinkUse& operator=(const LinkUse&) = delete;
};

// Tick of totmr: sets TimedOut and stops the timer, so it fires only once.
void totmr_Timer();

// Yields until at least RxExpected bytes wait on the port or replyTimeoutMs have passed since the
// call. The bytes are not read; stale bytes count too. On return
//   exactly RxExpected bytes wait: totmr is stopped;
//   more wait: totmr still runs and will set TimedOut later unless it is started again;
//   fewer wait: TimedOut is true.
// A last byte that arrives in the same Yield as the tick leaves TimedOut true.
void WaitReply();

// Sends `frame` as TxFrame, sets RxExpected and waits for the reply, which stays on the port.
void SendAndWait(Bytes frame, std::int16_t replyBytes);

// Reads all bytes that wait on the port into RxText.
void ReadReply();
// Appends all bytes that wait on the port to RxText.
void ReadReplyTail();

// SendAndWait, then ReadReply: for every frame whose time-out is not checked before the reply is
// read.
void Exchange(Bytes frame, std::int16_t replyBytes);

} // namespace modFunc
