#pragma once

/// How a change of clips that the clip maker didn't make itself reaches its tree.
///
/// The clip maker enters a handler that builds the tree anew where its window is visible, and takes it away when it
/// goes. Without one nothing happens: the tree is brought up to date when it is shown.
namespace kxClipRefresh
{
void setHandler(void (*handler)());
void run();
} // namespace kxClipRefresh
