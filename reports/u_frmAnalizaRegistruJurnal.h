#pragma once
// Stand-in for the form until its own unit is written: it exists with its
// caption so the program can create and show it.

#include <QWidget>

class TfrmAnalizaRegistruJurnal : public QWidget {
    Q_OBJECT
public:
    explicit TfrmAnalizaRegistruJurnal(QWidget *parent = nullptr);
};

extern TfrmAnalizaRegistruJurnal *frmAnalizaRegistruJurnal;
