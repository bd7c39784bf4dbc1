#include "link/exchange.h"

#include "app/state.h"
#include "platform/machine.h"

#include <cassert>
#include <utility>

namespace modFunc {

using platform::machine;

namespace {
LinkUser currentUser = LinkUser::Nobody;
}

LinkUser CurrentLinkUser() {
    return currentUser;
}

LinkUse::LinkUse(LinkUser user) {
    assert(!LinkInUse() && "check LinkInUse() before creating a LinkUse");
    currentUser = user;
}

LinkUse::~LinkUse() {
    currentUser = LinkUser::Nobody;
}

void totmr_Timer() {
    state().TimedOut = true;
    machine().totmr.setEnabled(false);
}

void WaitReply() {
    State& s = state();
    auto& m = machine();
    m.totmr.setInterval(replyTimeoutMs);
    s.TimedOut = false;
    m.totmr.setEnabled(true);
    while (m.cm.InBufferCount() < s.RxExpected && !s.TimedOut)
        m.events.Yield();
    if (m.cm.InBufferCount() == s.RxExpected)
        m.totmr.setEnabled(false);
}

void SendAndWait(Bytes frame, std::int16_t replyBytes) {
    State& s = state();
    s.TxFrame = std::move(frame);
    machine().cm.Output(s.TxFrame);
    s.RxExpected = replyBytes;
    WaitReply();
}

void ReadReply() {
    state().RxText = machine().cm.Input();
}

void ReadReplyTail() {
    const Bytes tail = machine().cm.Input();
    Bytes& text = state().RxText;
    text.insert(text.end(), tail.begin(), tail.end());
}

void Exchange(Bytes frame, std::int16_t replyBytes) {
    SendAndWait(std::move(frame), replyBytes);
    ReadReply();
}

} // namespace modFunc
