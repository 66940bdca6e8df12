#pragma once

/// What the exception says that is being handled; a standard text for one that is no std::exception. Call it in a
/// catch block: the host's tools may throw anything. The text lives as long as the exception.
const char* exceptionText();
