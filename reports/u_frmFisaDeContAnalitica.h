#pragma once
// Analytic account sheet: for one synthetic account and whole months, every
// analytic account with its opening balance and the postings of the period,
// each row with the running balance after it.

#include <QString>
#include <QWidget>

class TfrmFisaDeContAnalitica : public QWidget {
    Q_OBJECT
public:
    explicit TfrmFisaDeContAnalitica(QWidget *parent = nullptr);

    // Text of dsFisaContAnalitic, sent as it stands.
    static QString sqlFisaContAnalitic();
};

extern TfrmFisaDeContAnalitica *frmFisaDeContAnalitica;
