#pragma once

/// Duplicates one string into memory that free() releases; null when memory is short.
using DuplicateString = char* (*)(const char* text);

/// Copies an argument vector, since parsing changes the vector it is given. The copy is never
/// released: options and messages may point into it until the process ends.
/// @return the copy, ended by a null pointer; null, with nothing left allocated, when memory is
///         short
char** copyArguments(int argc, char** argv, DuplicateString duplicate);
