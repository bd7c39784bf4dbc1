#pragma once

namespace modFunc {

// The hex view `frmBuffer`, as used by the procedures that change the image.
struct BufferView {
    virtual ~BufferView() = default;
    // Closes the view if it is open, then opens it at the top of the image.
    virtual void Reopen() = 0;
};

// The view in use, which the main window sets with useBufferView(). Calling bufferView() before
// then is a programming error.
BufferView& bufferView();
void useBufferView(BufferView* inUse);

} // namespace modFunc
