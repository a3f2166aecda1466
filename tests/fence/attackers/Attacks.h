#pragma once

/// What conquered code would try. Each is harmless: it stops where it has shown
/// that it could go on.
///
/// The result is 0 if the attempt succeeded, else the error number, or -1 for an
/// attempt of another name.
int attempt(const char* name, const char* argument);
