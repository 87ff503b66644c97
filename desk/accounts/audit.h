#pragma once

#include <string>

#include "desk/accounts/accounts_file.h"
#include "desk/accounts/books.h"
#include "desk/accounts/opening.h"

namespace panelry::desk
{

/// Adds everything up from the opening, the filed deals and the open orders, with no arithmetic of the
/// broker's, and compares with `memory` and with what is filed. Empty: all agrees; else a line for each
/// difference.
std::string Audit(const Listing& listing, const Opening& opening, const Books& memory, AccountsFile& file);

}  // namespace panelry::desk
