// Work of somebody else's code in a process of its own, so that it crashes or hangs there.
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

struct Apart
{
    QByteArray answer;
    QString fault; // why there is no answer; empty when there is one
};

// Throws Failure when there is no process, Interrupted when the program shall end.
Apart workApart(const std::function<QByteArray()>& work);
