#pragma once
// Stand-in for the form until its own unit is written: it exists with its
// caption so the program can create and show it.

#include <QDialog>

class TfrmConta_select : public QDialog {
    Q_OBJECT
public:
    explicit TfrmConta_select(QWidget *parent = nullptr);
};

extern TfrmConta_select *frmConta_select;
