#pragma once
// Journal register analysis: the register entries of whole months, with the
// document's partner, its journal and an English description of each entry.

#include <QDate>
#include <QString>
#include <QWidget>

class TfrmAnalizaRegistruJurnal : public QWidget {
    Q_OBJECT
public:
    explicit TfrmAnalizaRegistruJurnal(QWidget *parent = nullptr);

    // Text of dsAnalizaRegistruJurnal, sent as it stands.
    static QString sqlAnalizaRegistruJurnal();
};

extern TfrmAnalizaRegistruJurnal *frmAnalizaRegistruJurnal;
