#pragma once

/// Keying the channels of the one node that the window "Node Channels" lists.
namespace kxScriptChannels
{
// Enter the functions in the module that is being filled.
void defineKeying();
void defineClipping();

// Nothing while there is no such window.
void keyAll();
void keySelected();
/// Lists the node that moves the clipping plane; nothing where the application has none.
void animateClippingTransform();
} // namespace kxScriptChannels
