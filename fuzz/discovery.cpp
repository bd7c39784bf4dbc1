#include "link/find_programmer.h"

#include "app/state.h"
#include "link/exchange.h"

#include "fuzz/scripted_box.h"

#include <numeric>

using namespace modFunc;
using fuzz::check;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    State& s = state();
    fuzz::Input input(data, size);
    const int options = input.byte();
    fuzz::ScriptedBox box(input, 0xFF);
    box.open = (options & 1) != 0;
    box.cannotOpen = (options & 6) == 6;
    s.ComPort = 5;
    s.ProgrammerFound = (options & 8) != 0;
    FindProgrammer();

    check(box.letters == (box.cannotOpen ? "" : "I"), "the box is asked once");
    check(box.vm.messages.size() == 1 && box.busyMs() == (box.cannotOpen ? 0 : 100),
          "the outcome is told once, after its time");
    check(s.ProgrammerFound == box.open && !LinkInUse(), "the port of a box that is found is open");
    const ShownMessage& told = box.vm.messages[0];
    check((told.title == "Device Found!") == s.ProgrammerFound, "what is told is what is so");
    const int took = std::accumulate(box.took.begin(), box.took.end(), 0);
    if (s.ProgrammerFound)
        check(took == 12 || (took == 13 && box.unasked), "a box answers by twelve bytes");
    else
        check(box.waitedAtMessage != 12, "twelve bytes are a box");
    return 0;
}
