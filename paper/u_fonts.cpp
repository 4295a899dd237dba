#include "paper/u_fonts.h"

#include <QFont>
#include <QStringList>

namespace paper {

void installFontSubstitutes()
{
    const QStringList narrow = {QStringLiteral("Liberation Sans"), QStringLiteral("Arimo"),
                                QStringLiteral("Nimbus Sans"), QStringLiteral("DejaVu Sans Condensed")};
    for (const char *family : {"Tahoma", "MS Sans Serif"})
        QFont::insertSubstitutions(QString::fromLatin1(family), narrow);
}

} // namespace paper
