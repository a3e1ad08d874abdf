#pragma once

/// What was typed into a field and isn't an edit yet, since nobody pressed Enter and the field still has the focus.
namespace kxTypedText
{
/// Makes it one, as leaving the field would. Before what was done is walked or saved: a field that goes then, with the
/// page that it is on, would make its edit in the middle.
void finish();
} // namespace kxTypedText
