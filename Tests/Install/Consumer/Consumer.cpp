#include "ZoSoftwarePlatform.h"

#include <cstdio>

int main()
{
    const ZoVelkor::CZoString text("frequency");
    const std::string syntax = ZoVelkor::CScpiToken::ScpiToken2SyntaxForm(text.ToStdString());
    std::puts(syntax.c_str());
    return syntax == "FREQuency" ? 0 : 1;
}
