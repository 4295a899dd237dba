#pragma once
// Grid style sheets: a sheet maps each visual element of a grid view to a
// style (background, font, text colour, each optional). The grid paints with
// the sheet it is given; the session keeps the named sheets in repositories.

#include <QColor>
#include <QFont>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

namespace ui {

struct CellStyle {
    std::optional<QColor> color;      // background
    std::optional<QFont> font;
    std::optional<QColor> textColor;
};

enum class GridElement {
    Background, Content, ContentEven, ContentOdd, FilterBox, IncSearch, Footer, Group, GroupByBox,
    Header, Inactive, Indicator, Preview, Selection,
    FilterRowInfoText, GroupFooterSortedSummary, GroupSortedSummary, GroupSummary, NewItemRowInfoText,
    BandBackground, BandHeader,
    // pivot grids
    ColumnHeader, ColumnHeaderArea, DataHeaderArea, FieldHeader, FilterHeaderArea, RowHeader, RowHeaderArea,
};

class GridStyleSheet {
public:
    GridStyleSheet() = default;
    explicit GridStyleSheet(QString name) : m_name(std::move(name)) {}

    const QString &name() const { return m_name; }
    void set(GridElement e, const CellStyle &s) { m_styles.insert(e, s); }
    bool has(GridElement e) const { return m_styles.contains(e); }
    // The element's style; an empty style when the sheet does not set it.
    CellStyle style(GridElement e) const { return m_styles.value(e); }

private:
    QString m_name;
    QHash<GridElement, CellStyle> m_styles;
};

// A named collection of sheets (the session's repositories).
class StyleRepository {
public:
    explicit StyleRepository(QString name = {}) : m_name(std::move(name)) {}
    const QString &name() const { return m_name; }
    GridStyleSheet &add(const QString &sheetName)
    {
        m_sheets.append(GridStyleSheet(sheetName));
        return m_sheets.last();
    }
    const GridStyleSheet *sheet(const QString &sheetName) const
    {
        for (const GridStyleSheet &s : m_sheets)
            if (s.name() == sheetName)
                return &s;
        return nullptr;
    }
    const QList<GridStyleSheet> &sheets() const { return m_sheets; }

private:
    QString m_name;
    QList<GridStyleSheet> m_sheets;
};

} // namespace ui
