#pragma once

namespace modFunc {

// The hex view `frmBuffer`, for those who change the image.
struct BufferView {
    virtual ~BufferView() = default;
    // Closes the view if it is open and opens it again, at the top of the image.
    virtual void Reopen() = 0;
};

// The view in use. The main window sets it; calling bufferView() before that is a fault of the
// program.
BufferView& bufferView();
void useBufferView(BufferView* inUse);

} // namespace modFunc
