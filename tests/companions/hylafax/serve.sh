#!/usr/bin/env bash
# Has a real HylaFAX server send the jobs of a folder to a modem that is played:
#
#   serve.sh MODEM PROGRAM CONVERTER FOLDER
#
# FOLDER/jobs has a line for each job: kind of document, lines per inch, page
# length in mm, data format (0 to 3), header line (yes or no), file. The fax of
# job N is left as sent-N.tif (what the converter wrote) and received-N.tif, the
# server's last word on it as status-N, and its logs in log/.
#
# Nothing of the machine is touched, and nothing leaves it: the spool folder is a
# copy in a mount namespace of its own, and there is no network. Exit status 77
# means that it cannot be done here.
set -euo pipefail

if [[ ${INSIDE-} != yes ]]; then
    for tool in faxq faxsend faxmodem ip unshare; do
        if ! PATH=$PATH:/usr/sbin:/sbin command -v $tool >/dev/null; then
            echo "skipped: $tool is not installed (Debian packages hylafax-server, iproute2)"
            exit 77
        fi
    done
    if ((EUID != 0)) || ! unshare --mount --net true 2>/dev/null; then
        echo "skipped: only root may give the server a spool folder of its own"
        exit 77
    fi
    # Its daemons are killed with the first process of their namespace.
    INSIDE=yes exec unshare --mount --net --pid --fork --kill-child --mount-proc bash "$0" "$@"
fi

player=$(realpath "$1")
folder=$(realpath "$4")
spool=/var/spool/hylafax
PATH=$folder/bin:/usr/local/bin:/usr/bin:/bin:/usr/local/sbin:/usr/sbin:/sbin

# The server's user has to reach all of it, wherever the sources are.
chmod 755 "$folder"
mkdir "$folder/bin" "$folder/etc" "$folder/lib" "$folder/log" "$folder/spool"
cp "$2" "$folder/bin/morvaltide"
for name in ps2fax pdf2fax tiff2fax; do cp "$3" "$folder/lib/morvaltide-$name"; done
cp -a $spool/. "$folder/spool"
cp -a /etc/hylafax/. "$folder/etc"
mount --bind "$folder/spool" $spool
mount --bind "$folder/etc" /etc/hylafax
mount --bind "$folder/etc" $spool/etc
mount -t tmpfs tmpfs /run/lock
chmod 1777 /run/lock
ip link set lo up
cd $spool
rm -f status/* etc/config.* docq/* sendq/* doneq/* tmp/*

"$player" "${MODEM_SPEED:-3}" "$folder/received" >"$folder/log/calls" 2>"$folder/log/modem" &
until terminal=$(sed -n 1p "$folder/log/calls") && [[ -n $terminal ]]; do sleep 0.1; done
device=${terminal#/dev/}
device=${device//\//_}

cat >etc/config <<END
PS2FaxCmd: $folder/lib/morvaltide-ps2fax
PDF2FaxCmd: $folder/lib/morvaltide-pdf2fax
TIFF2FaxCmd: $folder/lib/morvaltide-tiff2fax
PageChop: none
END

# configure <header line>: what faxsend reads at the start of a call.
configure() {
    cat >"etc/config.$device" <<END
ModemType: Class1
ModemRate: 19200
ModemFlowControl: rtscts
ModemSoftRTFCC: no
FAXNumber: +1.555.0100
LocalIdentifier: HylaFAX
TagLineFont: $([[ $1 != yes ]] || echo etc/lutRS18.pcf)
TagLineFormat: "From %%l|Page %%P of %%T"
END
    if [[ $1 == yes ]]; then echo '-m 0,0.2,0,0'; fi >etc/morvaltide.options
}

# submit <job> <kind> <resolution> <length> <format> <file>: as hfaxd does it.
submit() {
    local now document=docq/doc$1.${2:0:4}.$1
    now=$(date +%s)
    cp "$folder/$6" "$document"
    printf '%s\n' "tts:$now" "killtime:$((now + 600))" retrytime:0 state:6 npages:0 totpages:0 \
        ntries:0 ndials:0 totdials:0 maxdials:1 tottries:0 maxtries:1 pagewidth:215 \
        "resolution:$3" "pagelength:$4" priority:127 schedpri:127 minbr:0 desiredbr:13 \
        desiredst:0 desiredec:2 "desireddf:$5" desiredtl:0 useccover:0 usexvres:0 \
        external:5550199 number:5550199 mailaddr:root@localhost sender:root "jobid:$1" jobtag: \
        pagehandling: modem:any receiver: company: location: cover: client:localhost owner:root \
        "groupid:$1" signalrate: dataformat: jobtype:facsimile subaddr: passwd: doneop:default \
        commid: csi: nsf: pagechop:default chopthreshold:3 notify:none status: returned:0 \
        "$2:0::$document" >"sendq/q$1"
    chown uucp:uucp "$document" "sendq/q$1"
    chmod 600 "$document" "sendq/q$1"
    echo "S$1" >FIFO
}

# keep <job>: holds on to what the converter writes, which the server removes
# with the job. The name of the output is that of the document and its format.
keep() {
    local output
    for output in "docq/doc$1."*';'*; do
        # It may go away at any time, but then it has been kept before.
        [[ ! -s $output ]] || cp "$output" "$folder/sent-$1.tif" 2>/dev/null || true
    done
}

faxq -D >"$folder/log/faxq" 2>&1 &
while [[ ! -p FIFO ]]; do sleep 0.1; done
sleep 1
faxmodem -c '(0,1),(0-5),(0-4),(0-2),(0-3),(0-2),0,(0-7)' "$device"

job=0
while read -r kind resolution length format header file; do
    job=$((job + 1))
    configure "$header"
    submit $job "$kind" "$resolution" "$length" "$format" "$file"
    until [[ -e doneq/q$job ]]; do
        keep $job
        if ((SECONDS > 240)); then
            echo "job $job did not end" >&2
            exit 1
        fi
        sleep 0.2
    done
    sed -n '/^status:/,/^statuscode:/p' "doneq/q$job" >"$folder/status-$job"
    faxmodem -c '(0,1),(0-5),(0-4),(0-2),(0-3),(0-2),0,(0-7)' "$device"
done <"$folder/jobs"
cp -r log/. "$folder/log"
