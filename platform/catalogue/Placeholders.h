#pragma once

namespace arkeon {

/// Whether `translation` can be formatted with the arguments of `original`: the same number of
/// printf conversions, each argument with the same type. Positional forms (`%2$s`) are allowed.
/// A width or precision of more than three digits or taken from an argument (`*`), and `%n`, fit
/// nothing.
bool placeholdersFit(const char* original, const char* translation);

}  // namespace arkeon
