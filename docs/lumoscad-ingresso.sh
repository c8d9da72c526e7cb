#!/bin/sh
# A forced command for LumoScad's key: the SFTP service and the programs of one directory, nothing else.
programmi=/opt/contabile/programmi
sftp=/usr/lib/openssh/sftp-server

comando=$SSH_ORIGINAL_COMMAND
case $comando in
  internal-sftp | internal-sftp\ * | "$sftp" | "$sftp"\ *) exec "$sftp" ;;
esac

# Words in single quotes and nothing between them but a blank: to such a line the shell cannot mean anything else.
parola="('[^']*'|\\\\')+"
if printf '%s' "$comando" | LC_ALL=C grep -qzxE "$parola( $parola)*"; then
  eval "set -- $comando"
  nome=${1#"$programmi/"}
  case $nome in
    "$1" | '' | . | .. | */*) ;;
    *) exec "$@" ;;
  esac
fi
echo "comando non ammesso" >&2
exit 126
