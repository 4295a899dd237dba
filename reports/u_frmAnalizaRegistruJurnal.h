#pragma once
// Journal register analysis: the register entries of whole months, with the
// document's partner, its journal and an English description of each entry.
// The period travels as the bound parameters pDataIncep/pDataSf, widened to
// whole months at run time; the editors keep the dates as typed.

#include "reports/common/u_reportform.h"

class TfrmAnalizaRegistruJurnal : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmAnalizaRegistruJurnal(QWidget *parent = nullptr);

    // Text of dsAnalizaRegistruJurnal, sent as it stands.
    static QString sqlAnalizaRegistruJurnal();
    static rep::ReportDesc description();

    db::Query *dsAnalizaRegistruJurnal = nullptr;
};

extern TfrmAnalizaRegistruJurnal *frmAnalizaRegistruJurnal;
