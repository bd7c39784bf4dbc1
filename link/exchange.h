// The transport layer: sends a frame, waits for its reply and reads the reply. The program is
// always the master. It sends a frame only after the reply to the previous one or after a time-out,
// except for the power-down frames when a run is cut short by an exception, a crash or a
// termination of the process. A frame is not sent again if its reply is missing. Received bytes
// stay queued until they are read or the port is closed.
#pragma once

#include "platform/bytes.h"

#include <cstdint>

namespace modFunc {

inline constexpr int replyTimeoutMs = 1000;

// Who exchanges frames with the programmer. Check LinkInUse() before creating a LinkUse.
enum class LinkUser { Nobody, Discovery, Run };
LinkUser CurrentLinkUser();
inline bool LinkInUse() {
    return CurrentLinkUser() != LinkUser::Nobody;
}

// Makes `user` the link's user while this object exists. During that time the main window takes no
// input.
class LinkUse {
public:
    explicit LinkUse(LinkUser user);
    ~LinkUse();
    LinkUse(const LinkUse&) = delete;
    LinkUse& operator=(const LinkUse&) = delete;
};

// Handles a tick of totmr: sets TimedOut and stops the timer, so that it ticks only once.
void totmr_Timer();

// Yields until at least RxExpected bytes are waiting at the port or replyTimeoutMs have passed
// since the call. totmr.Tick must be totmr_Timer. The bytes are not read; stale bytes count too. On
// return, if
//   exactly RxExpected bytes are waiting: totmr is stopped;
//   more are waiting: totmr still runs and will set TimedOut later unless it is restarted first;
//   fewer are waiting: TimedOut is true.
// If the last byte arrives in the same Yield as the tick, TimedOut is true although all bytes are
// waiting.
void WaitReply();

// Stores `frame` in TxFrame and sends it, stores `replyBytes` in RxExpected and waits for the reply
// without reading it.
void SendAndWait(Bytes frame, std::int16_t replyBytes);

// Reads all bytes waiting at the port into RxText.
void ReadReply();
// Appends all bytes waiting at the port to RxText.
void ReadReplyTail();

// SendAndWait, then ReadReply: for a frame whose reply is read at once, whether or not a time-out
// has occurred.
void Exchange(Bytes frame, std::int16_t replyBytes);

} // namespace modFunc
