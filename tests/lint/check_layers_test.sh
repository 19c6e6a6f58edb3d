#!/usr/bin/env bash
# Proves that check_layers.sh finds what it is for: each breach is planted alone in a small tree.
#
#   check_layers_test.sh SCRATCH
set -euo pipefail

check=$(dirname "$(readlink -f "$0")")/check_layers.sh
scratch=${1:?usage: check_layers_test.sh SCRATCH}
failures=0

# A house of five layers: low <- middle <- high, and platform/desk and app above.
build_house() {
    rm -rf "$scratch"
    mkdir -p "$scratch"/src/{loose,low,network,middle/inner,high,platform/desk,app}
    cd "$scratch/src"
    printf 'add_layer(SOURCES Low.h DEPENDS)\ntarget_link_libraries(low PRIVATE high)\n' >low/CMakeLists.txt
    echo 'add_layer(SOURCES Door.cpp DEPENDS low PRIVATE_LIBS CURL::libcurl)' >network/CMakeLists.txt
    printf 'add_layer(\n    SOURCES Inner.h # a part\n    DEPENDS low\n    LIBS Qt6::Core)\n' >middle/inner/CMakeLists.txt
    echo 'add_layer(SOURCES High.cpp High.h DEPENDS middle_inner USES network)' >high/CMakeLists.txt
    echo 'add_layer(SOURCES Desk.h DEPENDS high)' >platform/desk/CMakeLists.txt
    echo 'add_layer(SOURCES Main.cpp USES high platform_desk)' >app/CMakeLists.txt
    echo '#include <QString>' >loose/Some.h
    echo '#include <QString>' >low/Low.h
    echo '#include <curl/curl.h>' >network/Door.cpp
    echo '#include "low/Low.h"' >middle/inner/Inner.h
    printf '#include "middle/inner/Inner.h"\n#include "low/Low.h"\n' >high/High.h
    printf '#include "high/High.h"\n#include "network/Door.h"\n#include "generated/Values.h"\n#include "High.moc"\n' >high/High.cpp
    echo '#include "high/High.h"' >platform/desk/Desk.h
    printf '#include "platform/desk/Desk.h"\nconst auto x = co_await f(std::move(y)); // if (co_await f())\nwhile (co_await f()) {\n' >app/Main.cpp
    cd - >/dev/null
}

# expect NAME FILE LINE-TO-ADD WORDS-OF-THE-REPORT
expect() {
    build_house
    printf '%s\n' "$3" >>"$scratch/$2"
    local found status=0
    found=$("$check" "$scratch") || status=$?
    if [[ $status -ne 1 || $(wc -l <<<"$found") -ne 1 || $found != "$2:"*"$4"* ]]; then
        printf 'FAILED %s: status %d, said: %s\n' "$1" "$status" "$found"
        failures=$((failures + 1))
    fi
}

build_house
if ! clean=$("$check" "$scratch"); then
    printf 'FAILED a clean house: %s\n' "$clean"
    failures=1
fi

expect 'upward include' src/low/Low.h '#include "high/High.h"' 'low does not declare high'
expect 'undeclared neighbour' src/middle/inner/Inner.h '  #  include "network/Door.h"' 'does not declare network'
expect 'private use in a header' src/high/High.h '#include "network/Door.h"' 'high does not declare network'
expect 'no layer' src/high/High.cpp '#include "loose/Some.h"' 'no declared layer'
expect 'around the folder' src/high/High.cpp '#include "High.h"' 'name the folder'
expect 'climbing' src/high/High.cpp '#include "../low/Low.h"' 'climbs out'
expect 'climbing midway' src/high/High.cpp '#include "high/../low/Low.h"' 'climbs out'
expect 'platform below app' src/high/High.cpp '#include "platform/desk/Desk.h"' 'only app may name platform'
expect 'a stray file' src/Stray.cpp '#include "low/Low.h"' 'belongs to no layer'
for header in curl/curl.h QNetworkAccessManager QtNetwork/QTcpSocket QTcpServer QUdpSocket QLocalSocket \
    QSslSocket QWebSocket QHostInfo sys/socket.h netinet/in.h arpa/inet.h netdb.h; do
    expect "$header" src/app/Main.cpp "#include <$header>" 'only src/network'
done
expect 'a name without its header' src/app/Main.cpp 'class QNetworkReply;' 'only src/network'
expect 'a network library' src/app/CMakeLists.txt 'target_link_libraries(app PRIVATE Qt6::Network)' 'only src/network'
expect 'if' src/low/Low.h 'if (!co_await f())' 'inside a condition'
expect 'switch' src/low/Low.h 'switch (co_await f())' 'inside a condition'
expect 'conditional' src/low/Low.h 'x = c ? co_await f() : y;' 'conditional expression'
expect 'member' src/low/Low.h 'co_return m_provider;' 'member given to co_return'
expect 'aggregate' src/low/Low.h 'co_await f(T{1});' 'braced list'
expect 'list' src/low/Low.h 'co_await f({1, 2});' 'braced list'
expect 'yielded aggregate' src/low/Low.h 'co_yield T{1};' 'braced list'
expect 'reference' src/low/Low.h 'QCoro::Task<int> run(const QString &text);' 'bind to a temporary'

rm -rf "$scratch"
exit $((failures > 0))
