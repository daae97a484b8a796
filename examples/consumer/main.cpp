// A program outside the tree that uses the installed library.

#include "korcoreplatform/main/string/TFormatString.h"
#include "korcoreplatform/main/string/TString.h"

#include <iostream>

int main()
{
    TString const name = TString::fromUtf8("Zo\xC3\xAB");
    std::cout << TFormat(u"%2, %1: %3 units", name, TString("hello").toUpper(), name.length())
              << std::endl;
    try {
        TFormat(u"100%");
    } catch (TFormatString::Exception const& failure) {
        std::cout << TString(failure.GetMessagesFront()) << std::endl;
    }
    return 0;
}
