#pragma once

/// The script module "kxAnimWidgets".
namespace kxAnimScript
{
/// Fills the module; called by the interpreter when it is imported first.
void registerFunctions();
} // namespace kxAnimScript
