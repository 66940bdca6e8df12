#include "exceptiontext.h"

#include <exception>

const char* exceptionText()
{
    try {
        throw;
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "an exception of an unknown kind";
    }
}
