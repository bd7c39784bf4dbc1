#include "platform/qt/text_encoding_posix.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>

void useUtf8() {
    std::setlocale(LC_CTYPE, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0)
        setenv("LC_ALL", "C.UTF-8", 1); // overrides all other locale variables
}
