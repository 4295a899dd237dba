#pragma once
// Stand-in for the form until its own unit is written: it exists with its
// caption so the program can create and show it.

#include <QWidget>

class TfrmAnalizaPostcalcul : public QWidget {
    Q_OBJECT
public:
    explicit TfrmAnalizaPostcalcul(QWidget *parent = nullptr);
};

// This form is never created: the global stays empty for the whole run.
extern TfrmAnalizaPostcalcul *frmAnalizaPostcalcul;
