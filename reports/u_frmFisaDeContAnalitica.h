#pragma once
// Stand-in for the form until its own unit is written: it exists with its
// caption so the program can create and show it.

#include <QWidget>

class TfrmFisaDeContAnalitica : public QWidget {
    Q_OBJECT
public:
    explicit TfrmFisaDeContAnalitica(QWidget *parent = nullptr);
};

extern TfrmFisaDeContAnalitica *frmFisaDeContAnalitica;
