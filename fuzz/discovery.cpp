#include "link/find_programmer.h"

#include "app/state.h"
#include "link/exchange.h"

#include "fuzz/scripted_programmer.h"

#include <numeric>

using namespace modFunc;
using fuzz::check;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    State& s = state();
    fuzz::Input input(data, size);
    const int options = input.byte();
    fuzz::ScriptedProgrammer programmer(input, 0xFF);
    programmer.open = (options & 1) != 0;
    programmer.cannotOpen = (options & 6) == 6;
    s.ComPort = 5;
    s.ProgrammerFound = (options & 8) != 0;
    FindProgrammer();

    check(programmer.commandCodes == (programmer.cannotOpen ? "" : "I"),
          "the programmer is asked once");
    check(programmer.vm.messages.size() == 1 &&
              programmer.busyMs() == (programmer.cannotOpen ? 0 : 100),
          "the outcome is shown once, after its time");
    check(s.ProgrammerFound == programmer.open && !LinkInUse(),
          "the port is open if a programmer was found");
    const ShownMessage& shown = programmer.vm.messages[0];
    check((shown.title == "Device Found!") == s.ProgrammerFound,
          "the message agrees with the result");
    const int took = std::accumulate(programmer.took.begin(), programmer.took.end(), 0);
    if (s.ProgrammerFound)
        check(took == 12 || (took == 13 && programmer.unasked),
              "a programmer replies by twelve bytes");
    else
        check(programmer.waitedAtMessage != 12, "twelve bytes are a programmer");
    return 0;
}
