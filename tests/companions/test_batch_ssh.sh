#!/usr/bin/env bash
# A batch over SSH to two servers on the loopback interface gives what a batch
# on this machine gives, and leaves nothing behind there.
# shellcheck source=../packaging/check.sh
source "$(dirname "$0")/../packaging/check.sh"
need parallel parallel
need sshd openssh-server
need ssh openssh-client
need gs ghostscript

batch=$sources/companions/morvaltide-batch
export PARALLEL_HOME=$work/parallel
mkdir "$PARALLEL_HOME"

servers=()
separation=
stopAll() {
    ((${#servers[@]} == 0)) || kill "${servers[@]}"
    [[ -z $separation ]] || rmdir "$separation" 2>/dev/null
}
# The service would make this folder when it starts.
if ((EUID == 0)) && [[ ! -d /run/sshd ]]; then
    separation=/run/sshd
    mkdir -m 755 "$separation"
fi

ssh-keygen -q -t ed25519 -N '' -f key
# startServer <name> <port>: one that runs every command in a folder of its own.
startServer() {
    mkdir -p "$1/tmp"
    ssh-keygen -q -t ed25519 -N '' -f "$1/hostkey"
    cat >"$1/config" <<END
Port $2
ListenAddress 127.0.0.1
HostKey $work/$1/hostkey
PidFile $work/$1/pid
AuthorizedKeysFile $work/key.pub
StrictModes no
UsePAM no
PermitRootLogin prohibit-password
PasswordAuthentication no
ForceCommand echo run >> $work/$1/runs; cd $work/$1 && HOME=$work/$1 TMPDIR=$work/$1/tmp PATH=$PATH LSAN_OPTIONS='${LSAN_OPTIONS-}' exec sh -c "\$SSH_ORIGINAL_COMMAND"
END
    /usr/sbin/sshd -D -e -f "$work/$1/config" 2>"$1/log" &
    servers+=($!)
    cat >>client <<END
Host $1
    HostName 127.0.0.1
    Port $2
    HostKeyAlias $1
    IdentityFile $work/key
    IdentitiesOnly yes
    UserKnownHostsFile $work/known
    StrictHostKeyChecking accept-new
    LogLevel ERROR
END
}
reach() {
    for ((i = 0; i < 100; ++i)); do
        timeout 10 ssh -F client -o BatchMode=yes "$1" true 2>/dev/null && return
        sleep 0.1
    done
    fail "the server $1 cannot be reached: $(<"$1/log")"
}
port=$((20000 + $$ % 20000))
startServer one "$port"
startServer two $((port + 1))
cat >>client <<END
Host dead
    HostName 127.0.0.1
    Port 9
END
reach one
reach two
: >one/runs
: >two/runs

mkdir in
makeDocuments 8 pngmono in/%d.png
makeDocuments 2 pdfwrite in/%d.pdf
echo '<h1>Fax</h1>' >cover.html
echo junk >in/bad.png
name="in/it's \$HOME.png"
cp in/1.png "$name"
{
    for i in 1 2 3 4; do printf 'OUT/%d.tif\t-r standard\t\tin/%d.png\n' $i $i; done
    printf 'OUT/a b.tif\t-c g4 -p letter\tcover.html\tin/5.png\tin/1.pdf\t%s\n' "$name"
    printf 'OUT/more/c.tif\t\t\tin/2.pdf\tin/6.png\n'
    printf 'OUT/bad.tif\t\t\tin/7.png\tin/bad.png\n'
    printf 'OUT/gone.tif\t\t\tin/gone.png\n'
} >list
sed 's/^OUT/here/' list >here.tsv
sed 's/^OUT/there/' list >there.tsv

"$batch" -j 2 here.tsv 2>here.err
equal "the exit status on this machine" $? 1

printf '1/dead\n2/one\n2/two\n' >hosts
BATCH_SSH="ssh -F $work/client" "$batch" -S hosts there.tsv 2>there.err
equal "the exit status over SSH" $? 1
equal "the summary over SSH" "$(sed 's/^there/here/' there.err)" "$(<here.err)"
equal "the first line of the summary" "$(sed -n '1s/;.*//p' there.err)" \
    "6 of 8 jobs are done, 0 of them with remarks, 2 failed"
equal "the result over SSH" "$(tree there)" "$(tree here)"
for server in one two; do
    [[ -s $server/runs ]] || fail "the server $server has done nothing"
    equal "what is left on $server" "$(ls -A "$server/tmp")" ""
done
equal "the number of connections" "$(cat one/runs two/runs | wc -l)" 10
