#pragma once

#include "arkeon/catalogue.h"

namespace arkeon {

/// The catalogue's text for this context and key in the language of `locale`; null when there is
/// none.
const char* translate(const zvlocale& locale, const char* context, const char* key);

}  // namespace arkeon
