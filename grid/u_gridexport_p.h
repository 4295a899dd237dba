#pragma once
// What the grid's exporters share (u_gridexport.cpp: the text variants;
// u_gridxlsx.cpp: the workbook): the rows they walk in the one export
// layout, and how a written file fails or is put in place. Not for use
// outside grid/.

#include "grid/u_gridmodel_p.h"

#include <QSaveFile>
#include <QString>

namespace grid {

constexpr qsizetype kFlushAt = 1 << 20;

// The pieces every variant writes, in the one export layout.
struct ExportSource {
    const GridModel &m;
    const GridModel::Impl &d;
    // Changes asked while the export runs wait until it has read the rows.
    GridModel::Hold hold;
    QList<int> cols;              // visible columns, display order
    bool groupFooters;
    bool footer;

    explicit ExportSource(const GridModel &model)
        : m(model), d(GridModelAccess::impl(model)), hold(model), cols(model.visibleColumns()),
          groupFooters(d.groupFooters && !d.groupSums.isEmpty() && !d.groupCols.empty()),
          footer(d.footer && !d.footerSums.isEmpty() && !d.records.empty())
    {
    }

    const ColState &col(int i) const { return d.cols[size_t(cols[i])]; }

    QString groupText(qint32 node) const
    {
        const Node &nd = d.nodes[size_t(node)];
        const ColState &cs = d.cols[size_t(d.groupCols[size_t(nd.level)])];
        return QStringLiteral("%1: %2 (%3)").arg(cs.c.headerText(), d.text(nd.keyRow, cs, true)).arg(nd.count);
    }

    // summaries under visible column i: of a group node, or of the footer when node < 0
    QList<std::pair<const GridSummary *, QVariant>> summariesUnder(int i, qint32 node) const
    {
        QList<std::pair<const GridSummary *, QVariant>> out;
        const QString &field = col(i).c.fieldName;
        const QList<GridSummary> &list = node < 0 ? d.footerSums : d.groupSums;
        for (int s = 0; s < list.size(); ++s) {
            if (list[s].shownUnder().compare(field, Qt::CaseInsensitive) != 0)
                continue;
            const Agg *a = node < 0 ? (size_t(s) < d.footerAggs.size() ? &d.footerAggs[size_t(s)] : nullptr)
                                    : d.nodeAgg(node, list[s]);
            out.append({&list[s], d.summaryValue(list[s], a)});
        }
        return out;
    }

    QString summaryCell(int i, qint32 node) const
    {
        QStringList parts;
        for (const auto &[s, v] : summariesUnder(i, node)) {
            const QString t = d.summaryText(*s, v);
            if (!t.isEmpty())
                parts << t;
        }
        return parts.join(QLatin1String("; "));
    }
};

} // namespace grid
