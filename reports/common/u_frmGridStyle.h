#pragma once
// Stand-in for the form until its own unit is written: it exists with its
// caption so the program can create and show it.

#include <QDialog>

class TfrmGridStyle : public QDialog {
    Q_OBJECT
public:
    explicit TfrmGridStyle(QWidget *parent = nullptr);
};

extern TfrmGridStyle *frmGridStyle;
