// The display rows (group rows, data rows of expanded groups, group footers),
// the focus kept on its record or group across rebuilds, and the scheduler
// that runs the passes a change needs, in order.

#include "grid/u_gridmodel_p.h"

#include "db/u_error.h"

namespace grid {

void GridModel::Impl::buildDisplay()
{
    drows.clear();
    if (groupCols.empty()) {
        drows.resize(records.size());
        for (qint32 p = 0; p < qint32(records.size()); ++p)
            drows[size_t(p)] = DRow{p, -1, RowKind::Data};
        return;
    }
    const bool footers = groupFooters && !groupSums.isEmpty();
    const int leafLevel = int(groupCols.size()) - 1;
    std::vector<qint32> open;
    qint32 i = 0;
    const qint32 count = qint32(nodes.size());
    auto closeUpTo = [&](qint32 idx) {
        while (!open.empty() && nodes[size_t(open.back())].end <= idx) {
            const Node &o = nodes[size_t(open.back())];
            if (footers)
                drows.push_back(DRow{o.first + o.count, open.back(), RowKind::GroupFooter});
            open.pop_back();
        }
    };
    while (i < count) {
        closeUpTo(i);
        const Node &nd = nodes[size_t(i)];
        drows.push_back(DRow{nd.first, i, RowKind::Group});
        if (!nd.expanded) {
            if (footers)
                drows.push_back(DRow{nd.first + nd.count, i, RowKind::GroupFooter});
            i = nd.end;
            continue;
        }
        db::busy::beat();
        if (nd.level == leafLevel) {
            for (qint32 p = nd.first; p < nd.first + nd.count; ++p)
                drows.push_back(DRow{p, -1, RowKind::Data});
            if (footers)
                drows.push_back(DRow{nd.first + nd.count, i, RowKind::GroupFooter});
        } else {
            open.push_back(i);
        }
        ++i;
    }
    closeUpTo(count);
}

qsizetype GridModel::Impl::locateRecord(qint32 rec) const
{
    auto it = std::lower_bound(drows.begin(), drows.end(), rec, [](const DRow &r, qint32 v) { return r.rec < v; });
    for (; it != drows.end() && it->rec == rec; ++it)
        if (it->kind == RowKind::Data)
            return qsizetype(it - drows.begin());
    return -1;
}

void GridModel::Impl::expandPathTo(qint32 rec)
{
    // walk down from the top groups to the leaf holding the record
    qint32 i = 0;
    const qint32 count = qint32(nodes.size());
    while (i < count) {
        Node &nd = nodes[size_t(i)];
        if (rec >= nd.first && rec < nd.first + nd.count) {
            if (!nd.expanded && !allExpanded)
                expandedPaths.insert(nodeKeyText(nd));
            nd.expanded = true;
            ++i; // its first child, if any
        } else {
            i = nd.end;
        }
    }
}

void GridModel::Impl::setFocusInternal(qsizetype row, bool syncDataSet)
{
    if (row >= qsizetype(drows.size()))
        row = qsizetype(drows.size()) - 1;
    if (row < -1)
        row = -1;
    if (syncDataSet && sync && ds && row >= 0 && drows[size_t(row)].kind == RowKind::Data) {
        const qint32 dr = records[size_t(drows[size_t(row)].rec)];
        if (ds->currentRow() != dr) {
            syncGuard = true;
            try {
                ds->setCurrentRow(dr);
            } catch (...) {
                syncGuard = false;
                throw;
            }
            syncGuard = false;
        }
    }
    if (row != focus) {
        focus = row;
        emit q->focusChanged(focus);
    }
}

void GridModel::Impl::run(unsigned flags)
{
    if (batch > 0 || rebuilding) {
        pending |= flags;
        return;
    }
    // A change made while the passes ran (a timer served meanwhile) runs after them.
    do {
        flags |= pending;
        pending = 0;
        if (flags)
            runOnce(flags);
        flags = 0;
    } while (pending && batch == 0);
}

void GridModel::Impl::runOnce(unsigned flags)
{
    struct Rebuilding {
        bool &on;
        explicit Rebuilding(bool &b) : on(b) { on = true; }
        ~Rebuilding() { on = false; }
        void end() { on = false; }
    } rebuildingNow(rebuilding);
    // Served, never stopped half way: the rows would be left half built.
    db::busy::Unstoppable whole;

    // what the focus is on, to find it again afterwards
    qint32 focusData = -1;
    qint32 focusNode = -1;
    if (focus >= 0 && focus < qsizetype(drows.size())) {
        const DRow &fr = drows[size_t(focus)];
        if (fr.kind == RowKind::Data)
            focusData = records[size_t(fr.rec)];
        else
            focusNode = fr.node;
    }
    if ((flags & FData) && ds && sync && ds->currentRow() >= 0)
        focusData = qint32(ds->currentRow());
    if ((flags & FData) && focusData >= n())
        focusData = -1;

    if (flags & FData) {
        dicts.clear();
        resolveAll();
        flags |= FOrder | FFilter;
    }
    if (flags & FOrder)
        computeOrder();
    if (flags & FFilter)
        computePass();
    if (flags & (FOrder | FFilter)) {
        computeRecords();
        flags |= FGroups;
    }
    if (flags & FGroups) {
        buildNodes();
        flags |= FSums | FDisplay;
        focusNode = -1;
    }
    if (flags & FSums)
        computeSums();
    if (flags & FDisplay) {
        const qint32 rec = focusData >= 0 && focusData < qint32(recPos.size()) ? recPos[size_t(focusData)] : -1;
        if (rec >= 0 && (flags & FGroups))
            expandPathTo(rec); // the focused record stays in sight after regrouping
        buildDisplay();
        const qsizetype newFocus = refocusedRow(rec, focusNode, flags);
        rebuildingNow.end();
        focus = -2; // force the signal
        // the dataset's current row follows a focus that a filter or a regrouping moved
        try {
            setFocusInternal(newFocus, !(flags & FData));
        } catch (const QuarvError &) {
            // a refused post keeps the dataset where it was; the grid shows the new rows anyway
            setFocusInternal(newFocus, false);
        }
        emit q->rowsChanged();
    }
    rebuildingNow.end();
    if (flags & FSums)
        emit q->summariesChanged();
}

// The display row to focus after a rebuild: the record that had the focus,
// else the group row that had it, else the innermost visible group holding
// the record, else where the focus was (or the first row).
qsizetype GridModel::Impl::refocusedRow(qint32 rec, qint32 focusNode, unsigned flags) const
{
    if (rec >= 0) {
        const qsizetype at = locateRecord(rec);
        if (at >= 0)
            return at;
    }
    if (focusNode >= 0) {
        for (size_t i = 0; i < drows.size(); ++i)
            if (drows[i].node == focusNode && drows[i].kind == RowKind::Group)
                return qsizetype(i);
    }
    qsizetype found = -1;
    if (rec >= 0) {
        // the record sits in a collapsed group: focus the innermost visible group row
        for (size_t i = 0; i < drows.size(); ++i) {
            const DRow &r = drows[i];
            if (r.kind == RowKind::Group && rec >= nodes[size_t(r.node)].first
                && rec < nodes[size_t(r.node)].first + nodes[size_t(r.node)].count)
                found = qsizetype(i);
        }
    }
    if (found < 0 && !drows.empty())
        found = (focus >= 0 && focus < qsizetype(drows.size()) && !(flags & (FData | FGroups))) ? focus : 0;
    return found;
}

void GridModel::Impl::onDataReset()
{
    run(FData);
}

void GridModel::Impl::onCurrentRowChanged(qsizetype row)
{
    if (syncGuard || !sync || row < 0 || row >= qsizetype(recPos.size()))
        return;
    if (focus >= 0 && focus < qsizetype(drows.size()) && drows[size_t(focus)].kind == RowKind::Data
        && records[size_t(drows[size_t(focus)].rec)] == row)
        return;
    q->focusDataRow(row);
}

// ================================================================ GridModel: rows, focus and records

// ----- display rows

qsizetype GridModel::rowCount() const { return qsizetype(d->drows.size()); }

RowKind GridModel::rowKind(qsizetype displayRow) const { return d->drows.at(size_t(displayRow)).kind; }

int GridModel::rowLevel(qsizetype displayRow) const
{
    const DRow &r = d->drows.at(size_t(displayRow));
    if (r.kind == RowKind::Data)
        return int(d->groupCols.size());
    return d->nodes[size_t(r.node)].level;
}

qsizetype GridModel::dataRow(qsizetype displayRow) const
{
    if (displayRow < 0 || displayRow >= qsizetype(d->drows.size()))
        return -1;
    const DRow &r = d->drows[size_t(displayRow)];
    return r.kind == RowKind::Data ? d->records[size_t(r.rec)] : -1;
}

GroupInfo GridModel::groupInfo(qsizetype displayRow) const
{
    GroupInfo gi;
    if (displayRow < 0 || displayRow >= qsizetype(d->drows.size()))
        return gi;
    const DRow &r = d->drows[size_t(displayRow)];
    if (r.kind == RowKind::Data)
        return gi;
    const Node &nd = d->nodes[size_t(r.node)];
    gi.level = nd.level;
    gi.column = d->groupCols[size_t(nd.level)];
    const ColState &cs = d->cols[size_t(gi.column)];
    gi.value = d->value(nd.keyRow, cs);
    gi.valueText = d->text(nd.keyRow, cs, true);
    gi.rowCount = nd.count;
    gi.expanded = nd.expanded;
    return gi;
}

QString GridModel::groupRowText(qsizetype displayRow) const
{
    const GroupInfo gi = groupInfo(displayRow);
    if (gi.column < 0)
        return {};
    return QStringLiteral("%1: %2 (%3)").arg(column(gi.column).headerText(), gi.valueText).arg(gi.rowCount);
}

// ----- expand / collapse

bool GridModel::isExpanded(qsizetype displayRow) const
{
    if (displayRow < 0 || displayRow >= qsizetype(d->drows.size()))
        return false;
    const DRow &r = d->drows[size_t(displayRow)];
    return r.kind != RowKind::Data && d->nodes[size_t(r.node)].expanded;
}

void GridModel::setExpanded(qsizetype displayRow, bool expanded)
{
    if (displayRow < 0 || displayRow >= qsizetype(d->drows.size()))
        return;
    const DRow &r = d->drows[size_t(displayRow)];
    if (r.kind == RowKind::Data)
        return;
    Node &nd = d->nodes[size_t(r.node)];
    if (nd.expanded == expanded)
        return;
    nd.expanded = expanded;
    // remembered by key, so a refresh or a new filter keeps what the operator opened
    if (expanded)
        d->expandedPaths.insert(d->nodeKeyText(nd));
    else
        d->expandedPaths.remove(d->nodeKeyText(nd));
    if (!expanded && d->allExpanded) {
        d->allExpanded = false;
        for (const Node &o : d->nodes)
            if (o.expanded)
                d->expandedPaths.insert(d->nodeKeyText(o));
    }
    // a focus inside the collapsed group moves to the group row
    if (!expanded && d->focus >= 0 && d->focus < qsizetype(d->drows.size())) {
        const DRow &f = d->drows[size_t(d->focus)];
        if (f.rec >= nd.first && f.rec < nd.first + nd.count && d->focus > displayRow)
            d->focus = displayRow;
    }
    const qint32 node = r.node;
    const qsizetype oldFocus = d->focus;
    const DRow focusRow = oldFocus >= 0 && oldFocus < qsizetype(d->drows.size()) ? d->drows[size_t(oldFocus)] : DRow{-1, -1, RowKind::Data};
    d->buildDisplay();
    qsizetype nf = -1;
    if (focusRow.kind == RowKind::Data && focusRow.rec >= 0)
        nf = d->locateRecord(focusRow.rec);
    if (nf < 0) {
        const qint32 want = focusRow.node >= 0 ? focusRow.node : node;
        for (size_t i = 0; i < d->drows.size(); ++i)
            if (d->drows[i].node == want && d->drows[i].kind == (focusRow.node >= 0 ? focusRow.kind : RowKind::Group)) {
                nf = qsizetype(i);
                break;
            }
    }
    d->focus = -2;
    d->setFocusInternal(nf, false);
    emit rowsChanged();
}

void GridModel::toggleExpanded(qsizetype displayRow) { setExpanded(displayRow, !isExpanded(displayRow)); }

void GridModel::expandAll()
{
    d->allExpanded = true;
    for (Node &nd : d->nodes)
        nd.expanded = true;
    d->run(Impl::FDisplay);
}

void GridModel::collapseAll()
{
    d->allExpanded = false;
    d->expandedPaths.clear();
    for (Node &nd : d->nodes)
        nd.expanded = false;
    d->focus = -1;
    d->run(Impl::FDisplay);
}

// ----- focus and records

qsizetype GridModel::focusedRow() const { return d->focus; }
void GridModel::setFocusedRow(qsizetype displayRow) { d->setFocusInternal(displayRow, true); }
qsizetype GridModel::focusedDataRow() const { return dataRow(d->focus); }

bool GridModel::focusDataRow(qsizetype row)
{
    if (row < 0 || row >= qsizetype(d->recPos.size()) || d->recPos[size_t(row)] < 0)
        return false;
    const qint32 rec = d->recPos[size_t(row)];
    qsizetype at = d->locateRecord(rec);
    if (at < 0) {
        d->expandPathTo(rec);
        d->buildDisplay();
        at = d->locateRecord(rec);
        emit rowsChanged();
    }
    d->setFocusInternal(at, true);
    return true;
}

qsizetype GridModel::displayRowOfDataRow(qsizetype row) const
{
    if (row < 0 || row >= qsizetype(d->recPos.size()) || d->recPos[size_t(row)] < 0)
        return -1;
    return d->locateRecord(d->recPos[size_t(row)]);
}

qsizetype GridModel::recordCount() const { return qsizetype(d->records.size()); }

qsizetype GridModel::recordNumber() const
{
    if (d->focus < 0 || d->focus >= qsizetype(d->drows.size()))
        return 0;
    const DRow &r = d->drows[size_t(d->focus)];
    if (r.kind == RowKind::Data)
        return r.rec + 1;
    // A group row or its footer: the group's first record.
    return r.node >= 0 && size_t(r.node) < d->nodes.size() ? d->nodes[size_t(r.node)].first + 1 : 0;
}

qsizetype GridModel::recordIndexOfDataRow(qsizetype row) const
{
    if (row < 0 || row >= qsizetype(d->recPos.size()))
        return -1;
    return d->recPos[size_t(row)];
}

qsizetype GridModel::recordDataRow(qsizetype recordIndex) const
{
    if (recordIndex < 0 || recordIndex >= qsizetype(d->records.size()))
        return -1;
    return d->records[size_t(recordIndex)];
}

void GridModel::firstRecord()
{
    if (!d->records.empty())
        focusDataRow(d->records.front());
}

void GridModel::lastRecord()
{
    if (!d->records.empty())
        focusDataRow(d->records.back());
}

void GridModel::nextRecord()
{
    if (d->records.empty())
        return;
    qint32 target = 0;
    if (d->focus >= 0 && d->focus < qsizetype(d->drows.size())) {
        const DRow &r = d->drows[size_t(d->focus)];
        target = r.kind == RowKind::Data ? r.rec + 1 : r.rec;
    }
    if (target >= qint32(d->records.size()))
        return;
    focusDataRow(d->records[size_t(target)]);
}

void GridModel::priorRecord()
{
    if (d->records.empty() || d->focus < 0 || d->focus >= qsizetype(d->drows.size()))
        return;
    const DRow &r = d->drows[size_t(d->focus)];
    qint32 target = r.rec - 1;
    if (r.kind == RowKind::GroupFooter)
        target = r.rec - 1;
    if (target < 0)
        return;
    focusDataRow(d->records[size_t(target)]);
}

void GridModel::rebuild() { d->run(Impl::FData); }

bool GridModel::isRebuilding() const { return d->rebuilding; }

} // namespace grid
