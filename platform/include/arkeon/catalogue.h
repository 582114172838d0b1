#pragma once

/// Translated messages on GNU gettext: domain `akhostmgmt`, catalogues below `<root>/locale`,
/// UTF-8.

/// The locale that the environment asks for.
struct zvlocale {
    char messages[256];    ///< LC_MESSAGES: the language of the texts
    char characters[256];  ///< LC_CTYPE: the character set of the terminal
};

/// Sets the categories for messages and characters from the environment (LC_ALL, LC_MESSAGES, LANG)
/// and describes them in `locale`. All other categories stay as they are: numbers and dates do not
/// depend on the locale. A locale that the system does not have counts as "C".
/// @return 0; `*status` is set to the same
int zvgetlocaleEx(zvlocale* locale, int* status);

/// Writes the text of message `id`, formatted printf-style with the arguments, into `buffer`; cut
/// to `size` - 1 bytes without splitting a UTF-8 character, always terminated. The text is the
/// catalogue's for the context `id` and the key `defaultText`; `defaultText` itself when there is
/// none, or when its placeholders are not those of `defaultText` (same number, same types;
/// positional forms such as `%2$s` are allowed).
/// @return 0
int zvgetmsg(
    const char* id, const zvlocale& locale, char* buffer, unsigned long size,
    const char* defaultText, ...) __attribute__((format(printf, 5, 6)));

/// The text of a status code: one sentence in the catalogue's language (context `Status` and the
/// number, as in `Status7610`), never null. Valid until the next call.
const char* getECmsgl(int status, const zvlocale& locale);
