#pragma once
// Stand-in for the form until its own unit is written: it exists with its
// caption so the program can create and show it.

#include <QWidget>

class TfrmAnalizaContabilaDetaliata : public QWidget {
    Q_OBJECT
public:
    explicit TfrmAnalizaContabilaDetaliata(QWidget *parent = nullptr);
};

extern TfrmAnalizaContabilaDetaliata *frmAnalizaContabilaDetaliata;
