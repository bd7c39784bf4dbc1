#pragma once

namespace modFunc {

// The hex view `frmBuffer`, as those see it who change the image.
struct BufferView {
    virtual ~BufferView() = default;
    // Closes the view if it is open and shows it anew, at the top of the image.
    virtual void Reopen() = 0;
};

// The view in use; whoever starts the program sets it.
BufferView& bufferView();
void useBufferView(BufferView* inUse);

} // namespace modFunc
