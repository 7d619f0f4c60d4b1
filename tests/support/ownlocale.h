// A locale made for a test, as a machine may have none: Latin 1, with one category.
#ifndef TESTS_SUPPORT_OWNLOCALE_H
#define TESTS_SUPPORT_OWNLOCALE_H

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "os/folder.h"

struct OwnLocale {
    bool isSet;
    const int category;

    // The category's name, its number, and what its definition says. In force until the destructor.
    OwnLocale(const std::string &name, int number, const std::string &definition) : category(number)
    {
        const Folder folder;
        std::string map = "<code_set_name> LATIN\n<mb_cur_min> 1\n<mb_cur_max> 1\n<escape_char> /\nCHARMAP\n";
        char line[32];
        for (int i = 0; i < 256; ++i)
            map.append(line, static_cast<size_t>(snprintf(line, sizeof line, "<U%04X> /x%02x\n", i, i)));
        folder.Make("map", map + "END CHARMAP\n");
        folder.Make("source", "escape_char /\n" + name + "\n" + definition + "END " + name + "\n");
        const std::string command = std::string("cd ") + folder.Path() + " && localedef -c -f ./map -i ./source ./own";
        (void)std::system((command + " 2>/dev/null").c_str()); // 1 for the categories that are left out
        setenv("LOCPATH", folder.Path(), 1);
        isSet = setlocale(category, "own") != nullptr;
        unsetenv("LOCPATH");
    }
    ~OwnLocale()
    {
        setlocale(category, "C");
    }
};

#endif
