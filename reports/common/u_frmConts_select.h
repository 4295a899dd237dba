#pragma once
// Stand-in for the form until its own unit is written: it exists with its
// caption so the program can create and show it.

#include <QDialog>

class TfrmConts_select : public QDialog {
    Q_OBJECT
public:
    explicit TfrmConts_select(QWidget *parent = nullptr);
};

extern TfrmConts_select *frmConts_select;
