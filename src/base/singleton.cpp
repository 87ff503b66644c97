#include "base/singleton.h"

#undef NDEBUG  // a release ends here too
#include <cassert>

namespace panelry
{

void AssertMade(const void* m_pInstance)
{
    assert(m_pInstance);
}

}  // namespace panelry
