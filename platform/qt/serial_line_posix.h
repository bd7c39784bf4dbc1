// What Qt's serial port does not tell of its line.
#pragma once

// Bytes that have arrived and wait in the system's queue, at least 0.
int waitingBytes(int descriptor);

// The other side has gone for good: the device was unplugged or the terminal hung up.
bool lineIsDead(int descriptor);
