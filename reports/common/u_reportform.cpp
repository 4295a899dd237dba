#include "reports/common/u_reportform.h"

#include "db/u_busy.h"
#include "reports/common/u_wrapbutton.h"
#include "analyses/u_reportexport.h"
#include "analyses/u_reportrun.h"
#include "analyses/u_platform.h"
#include "ui/u_buttonedit.h"
#include "ui/u_dateedit.h"
#include "ui/u_filedialog.h"
#include "ui/u_grid.h"
#include "ui/u_messages.h"
#include "ui/u_progress.h"
#include "ui/u_waitcursor.h"

#include <QBoxLayout>
#include <QCloseEvent>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>

#include <optional>
#include <stdexcept>

TReportForm::TReportForm(rep::ReportDesc desc, FormSession &session, QWidget *parent)
    : QWidget(parent), m_desc(std::move(desc)), m_session(session)
{
    const QStringList faults = rep::validate(m_desc);
    if (!faults.isEmpty())
        throw std::logic_error(faults.join(QLatin1Char('\n')).toStdString());

    setObjectName(m_desc.formName);
    setWindowTitle(m_desc.formName);
    resize(m_desc.size);

    m_query = new db::Query(this);
    m_query->setObjectName(m_desc.queryName);
    m_query->setSql(m_desc.sql);
    m_query->setConnection(m_session.connection());

    if (!m_desc.ownDataListSql.isEmpty()) {
        m_ownDataList = new db::Query(this);
        m_ownDataList->setObjectName(QStringLiteral("dsDataList"));
        m_ownDataList->setSql(m_desc.ownDataListSql);
        m_ownDataList->setUpdateTable(QStringLiteral("data_list"));
        m_ownDataList->setConnection(m_session.connection());
    }

    buildForm();
}

TReportForm::~TReportForm() = default;

void TReportForm::buildForm()
{
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(6, 6, 6, 0);
    outer->setSpacing(4);

    buildParamStrip(outer);

    // ----- the grid fills the form
    buildGrid();
    outer->addWidget(m_grid, 1);

    // ----- export buttons at the bottom left
    if (!m_desc.exports.isEmpty() && !m_desc.exportsBesideParams) {
        auto *bottom = new QHBoxLayout;
        addExportButtons(bottom);
        bottom->addStretch(1);
        outer->addLayout(bottom);
    }

    if (m_desc.statusBar) {
        m_statusBar = new QStatusBar(this);
        m_statusBar->setObjectName(QStringLiteral("StatusBar1"));
        m_statusBar->setSizeGripEnabled(false);
        outer->addWidget(m_statusBar);
    } else {
        outer->addSpacing(4);
    }
}

// The parameter strip: title, editors, "Cauta" ... style button at the right.
void TReportForm::buildParamStrip(QVBoxLayout *outer)
{
    auto *top = new QHBoxLayout;
    top->setSpacing(8);
    outer->addLayout(top);

    m_title = new QLabel(m_desc.title, this);
    m_title->setObjectName(m_desc.titleObjectName);
    QFont tf = m_title->font();
    tf.setBold(true);
    tf.setPointSize(tf.pointSize() + 2);
    m_title->setFont(tf);
    top->addWidget(m_title);
    top->addSpacing(12);

    QWidget *editorHost = this;
    auto *strip = new QHBoxLayout;
    strip->setSpacing(6);
    if (!m_desc.paramGroupTitle.isEmpty()) {
        auto *box = new QGroupBox(m_desc.paramGroupTitle, this);
        box->setObjectName(QStringLiteral("cxGroupBox1"));
        box->setLayout(strip);
        top->addWidget(box);
        editorHost = box;
    } else {
        top->addLayout(strip);
    }

    addEditors(editorHost, strip);

    m_run = new QPushButton(m_desc.runCaption, editorHost);
    m_run->setObjectName(m_desc.runButtonName);
    m_run->setAccessibleName(m_desc.runCaption);
    if (m_desc.runButtonBold) {
        QFont bf = m_run->font();
        bf.setBold(true);
        m_run->setFont(bf);
    }
    strip->addWidget(m_run);
    connect(m_run, &QPushButton::clicked, this, [this] { ui::guarded([this] { Cauta(); }); });
    for (const rep::HiddenLabel &l : std::as_const(m_desc.hiddenLabels)) {
        auto *lbl = new QLabel(l.text, editorHost);
        lbl->setObjectName(l.objectName);
        lbl->hide();
    }
    if (m_desc.exportsBesideParams)
        addExportButtons(top);
    top->addStretch(1);

    if (!m_desc.styleKey.isEmpty()) {
        auto *b = new WrapButton(QStringLiteral("Salvare/Restaurare Mod Prezentare Grid"), this);
        b->setObjectName(m_desc.styleButtonName);
        const int row = b->fontMetrics().height() + 6;
        b->setFixedSize(150, 2 * row + 6); // as tall as two rows of text
        top->addWidget(b, 0, Qt::AlignTop | Qt::AlignRight);
        m_style = b;
        connect(b, &QPushButton::clicked, this, [this] { ui::guarded([this] { styleButtonClick(); }); });
    }
}

void TReportForm::addEditors(QWidget *editorHost, QHBoxLayout *strip)
{
    for (const rep::EditorDesc &e : std::as_const(m_desc.editors)) {
        QWidget *w = nullptr;
        switch (e.kind) {
        case rep::EditorKind::Date: w = new ui::DateEdit(editorHost); break;
        case rep::EditorKind::ButtonEdit: w = new ui::ButtonEdit(editorHost); break;
        case rep::EditorKind::Text: w = new QLineEdit(editorHost); break;
        }
        w->setObjectName(e.objectName);
        if (e.width > 0)
            w->setFixedWidth(e.width);
        if (!e.label.isEmpty()) {
            auto *lbl = new QLabel(e.label, editorHost);
            lbl->setObjectName(QStringLiteral("lbl") + e.objectName);
            lbl->setBuddy(w);
            w->setAccessibleName(e.label);
            strip->addWidget(lbl);
        }
        strip->addWidget(w);
        m_editors.append(w);
        wireEditor(e, w);
    }
}

void TReportForm::addExportButtons(QBoxLayout *into)
{
    for (const rep::ExportDesc &e : std::as_const(m_desc.exports)) {
        auto *b = new QPushButton(e.caption, this);
        b->setObjectName(e.objectName);
        b->setAccessibleName(e.caption);
        b->setProperty("exportKind", int(e.kind));
        into->addWidget(b, 0, Qt::AlignTop);
        m_exports.append(b);
        const rep::ExportKind k = e.kind;
        connect(b, &QPushButton::clicked, this, [this, k] { ui::guarded([this, k] { exportKind(k); }); });
    }
}

void TReportForm::buildGrid()
{
    m_grid = new ui::Grid(this);
    m_grid->setObjectName(QStringLiteral("cxGrid1"));
    m_gridView = m_grid->view();
    m_gridView->setObjectName(QStringLiteral("cxGrid1DBTableView1"));
    m_model = m_gridView->model();

    const rep::GridOptions &o = m_desc.grid;
    m_gridView->setFilterRowVisible(o.filterRow);
    m_gridView->setFooterVisible(o.footer);
    m_gridView->setGroupFootersVisible(o.groupFooters);
    m_gridView->setGroupByBoxVisible(o.groupByBox);
    m_gridView->setIndicatorVisible(o.indicator);
    m_grid->setNavigatorVisible(true);
    m_gridView->setGridStyleSheet(m_session.reportSheet());

    rep::setUpGrid(m_desc, *m_model);
    m_gridView->setDataSet(m_query);
    m_gridView->setPaperSource({[this] { return pageHeader(); },
                                [this] { return proposedFileName(rep::pdfFileName(m_desc)); }});
}

paper::PageHeader TReportForm::pageHeader() const
{
    paper::PageHeader h;
    h.title = m_title->text();
    h.period = rep::parametersText(m_desc, [this](const rep::EditorDesc &e) {
        if (ui::DateEdit *de = dateEdit(e.objectName))
            return de->isEmpty() ? QString() : de->date().toString(ui::DateEdit::format());
        return editorText(e.objectName);
    });
    h.issuer = m_session.issuer();
    h.printedAt = QDateTime::currentDateTime();
    return h;
}

void TReportForm::wireEditor(const rep::EditorDesc &e, QWidget *w)
{
    auto *de = qobject_cast<ui::DateEdit *>(w);
    if (!de)
        return;
    switch (e.snap) {
    case rep::DateSnap::None: break;
    case rep::DateSnap::MonthStartOnChange:
    case rep::DateSnap::MonthEndOnChange: {
        const rep::DateConv conv = e.snap == rep::DateSnap::MonthStartOnChange ? rep::DateConv::MonthStart
                                                                               : rep::DateConv::MonthEnd;
        // Setting the snapped value changes it once more, to the same day: that ends it.
        connect(de, &ui::DateEdit::valueChanged, this, [de, conv](const QDate &d) {
            if (!d.isNull())
                de->setDate(rep::convertDate(d, conv));
        });
        break;
    }
    case rep::DateSnap::MonthStartOnExit:
    case rep::DateSnap::MonthEndOnExit: {
        const rep::DateConv conv = e.snap == rep::DateSnap::MonthStartOnExit ? rep::DateConv::MonthStart
                                                                             : rep::DateConv::MonthEnd;
        connect(de, &ui::DateEdit::exited, this, [de, conv] {
            if (!de->isEmpty())
                de->setDate(rep::convertDate(de->date(), conv));
        });
        break;
    }
    }
}

// ----- components

QWidget *TReportForm::editor(const QString &objectName) const
{
    for (QWidget *w : m_editors)
        if (w->objectName() == objectName)
            return w;
    return nullptr;
}

ui::DateEdit *TReportForm::dateEdit(const QString &objectName) const
{
    return qobject_cast<ui::DateEdit *>(editor(objectName));
}

ui::ButtonEdit *TReportForm::buttonEdit(const QString &objectName) const
{
    return qobject_cast<ui::ButtonEdit *>(editor(objectName));
}

QString TReportForm::editorText(const QString &objectName) const
{
    if (auto *le = qobject_cast<QLineEdit *>(editor(objectName)))
        return le->text();
    return {};
}

QDate TReportForm::editorDate(const QString &objectName) const
{
    if (auto *de = dateEdit(objectName))
        return de->date();
    return {};
}

QPushButton *TReportForm::exportButton(rep::ExportKind kind) const
{
    for (QPushButton *b : m_exports)
        if (b->property("exportKind").toInt() == int(kind))
            return b;
    return nullptr;
}

QString TReportForm::statusText() const
{
    return m_statusBar ? m_statusBar->currentMessage() : QString();
}

void TReportForm::setStatusText(const QString &text)
{
    if (!m_statusBar)
        return;
    if (text.isEmpty())
        m_statusBar->clearMessage();
    else
        m_statusBar->showMessage(text);
}

// ----- run

// The run steps over this form: its editors, its queries, the message
// service, the hourglass (with a repaint, so the window shows the busy state).
class TReportForm::FormRunHost : public rep::RunHost {
public:
    explicit FormRunHost(TReportForm &f) : m_f(f) {}
    QDate date(const QString &editor) const override { return m_f.editorDate(editor); }
    QString text(const QString &editor) const override { return m_f.editorText(editor); }
    bool isEmpty(const QString &editor) const override
    {
        if (ui::DateEdit *de = m_f.dateEdit(editor))
            return de->isEmpty();
        return m_f.editorText(editor).isEmpty();
    }
    db::Query &query() override { return *m_f.m_query; }
    db::Query &periodRow(rep::PeriodSource source) override { return m_f.periodRow(source); }
    void inform(const QString &message) override { ui::messages().information(message, &m_f); }
    void beginBusy() override
    {
        m_busy.emplace();
        m_f.repaint();
    }
    void endBusy() override { m_busy.reset(); }
    void customStep(const QString &name) override { m_f.runCustomStep(name); }

private:
    TReportForm &m_f;
    std::optional<ui::WaitCursor> m_busy;
};

void TReportForm::Cauta()
{
    // A run stopped before is not what the status bar says of this one.
    if (statusText() == cancelledText())
        setStatusText(QString());
    FormRunHost host(*this);
    ui::ProgressWatch progress(this);
    try {
        rep::runReport(m_desc, host);
        // Stopped while the grid was being built: the rows go all the same.
        if (!progress.stopAsked())
            return;
    } catch (const db::busy::Cancelled &) {
    }
    // What the run wrote to the period row stays as written.
    m_query->close();
    if (m_statusBar)
        setStatusText(cancelledText());
    else
        ui::messages().information(cancelledText(), this);
}

db::Query &TReportForm::periodRow(rep::PeriodSource source) const
{
    if (source == rep::PeriodSource::Own) {
        if (!m_ownDataList)
            throw QuarvError(QStringLiteral("Formularul %1 nu are perioada proprie (dsDataList).").arg(objectName()));
        return *m_ownDataList;
    }
    if (db::Query *row = m_session.periodRow())
        return *row;
    throw QuarvError(QStringLiteral("Sesiunea nu are perioada (dsDataList)."));
}

void TReportForm::runCustomStep(const QString &name)
{
    throw QuarvError(QStringLiteral("Pasul \"%1\" nu este definit in %2.").arg(name, objectName()));
}

// ----- exports

QString TReportForm::proposedFileName(const QString &fileName) const
{
    return platform::documentsFile(m_session.documentsFolder(), fileName);
}

void TReportForm::exportKind(rep::ExportKind kind)
{
    if (const rep::ExportDesc *e = m_desc.exportOf(kind))
        return doExport(*e);
    throw QuarvError(QStringLiteral("Formularul %1 nu are exportul %2.").arg(objectName(), rep::exportKindName(kind)));
}

void TReportForm::doExport(const rep::ExportDesc &e)
{
    using rep::ExportKind;
    // All the query's data needs a query that ran; before the first "Cauta"
    // there is nothing to move and no parameters to open it with.
    if (e.kind == ExportKind::AllDataCsv && !m_query->isActive())
        throw QuarvError(notRunText());

    const QString filter = rep::exportFilter(e.kind);
    const QString chosen = ui::fileDialog().saveFileName(filter, proposedFileName(e.fileName), this);
    if (chosen.isEmpty())
        return;
    // A name typed without an extension gets the variant's, so the file opens
    // by double click; the status bar names the file written.
    const QString file = ui::withDefaultSuffix(chosen, ui::filterSuffix(filter));

    // The two CSV buttons name the file in the status bar and say "ok".
    const bool announced = e.kind == ExportKind::GridCsv || e.kind == ExportKind::AllDataCsv;
    if (announced)
        setStatusText(QString());
    try {
        ui::ProgressWatch progress(this);
        rep::ReportExport(e.kind, file, platform::listSeparator()).write(*m_model, *m_query);
    } catch (const db::busy::Cancelled &) {
        return; // stopped: no file, and nothing to say
    }
    if (announced) {
        setStatusText(file);
        ui::messages().information(QStringLiteral("ok"), this);
    } else if (e.kind == ExportKind::GridCsvStatus) {
        setStatusText(QStringLiteral("fisier exportat: ") + file);
    }
}

// ----- style button

void TReportForm::styleButtonClick()
{
    m_session.showStyleManager(m_desc.styleKey, m_model);
}

// ----- show and close

void TReportForm::FormShow()
{
    const QDate today = QDate::currentDate();
    for (const rep::EditorDesc &e : std::as_const(m_desc.editors)) {
        ui::DateEdit *de = dateEdit(e.objectName);
        if (!de)
            continue;
        if (e.onShow == rep::DateOnShow::CurrentMonthStart)
            de->setDate(rep::convertDate(today, rep::DateConv::MonthStart));
        else if (e.onShow == rep::DateOnShow::CurrentMonthEnd)
            de->setDate(rep::convertDate(today, rep::DateConv::MonthEnd));
    }
}

void TReportForm::FormClose()
{
    if (m_desc.closeQueryOnClose)
        m_query->close();
}

void TReportForm::showEvent(QShowEvent *e)
{
    QWidget::showEvent(e);
    if (!e->spontaneous())
        ui::guarded([this] { FormShow(); });
}

void TReportForm::closeEvent(QCloseEvent *e)
{
    ui::guarded([this] { FormClose(); });
    QWidget::closeEvent(e);
}
