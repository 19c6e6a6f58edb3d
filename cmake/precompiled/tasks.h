// The same for rooms whose work may wait.
#include "values.h"

#include <QAbstractListModel>
#include <QCoreApplication>
#include <QCoroFuture>
#include <QCoroTask>
#include <QFile>
#include <QPointer>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <stop_token>
#include <thread>
