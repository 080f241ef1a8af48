#include "base/OneLine.h"

#include <algorithm>

namespace pelloran {

bool isObeyedByTerminals(QChar character) {
    switch (character.category()) {
    case QChar::Other_Control: // escape sequences begin with one of them, or with one of 128 to 159
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        break;
    }
    switch (character.direction()) {
    case QChar::DirLRE:
    case QChar::DirLRO:
    case QChar::DirRLE:
    case QChar::DirRLO:
    case QChar::DirPDF:
    case QChar::DirLRI:
    case QChar::DirRLI:
    case QChar::DirFSI:
    case QChar::DirPDI:
        return true;
    default:
        return false;
    }
}

QString inOneLine(QString text) {
    std::ranges::replace_if(text, isObeyedByTerminals, u' ');
    return text;
}

} // namespace pelloran
