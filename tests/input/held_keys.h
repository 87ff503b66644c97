#pragma once

namespace panelry::test
{

/// Does the display believe that a key is down?
bool AnyKeyHeld();

}  // namespace panelry::test
