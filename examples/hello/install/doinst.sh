( cd usr/bin ; rm -rf zet-hi )
( cd usr/bin ; ln -sf zet-hello zet-hi )
