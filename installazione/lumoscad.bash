# shellcheck shell=bash
# Completion of lumoscad's own options and of the options of its commands.
_lumoscad() {
  local parola=${COMP_WORDS[COMP_CWORD]} prima=${COMP_WORDS[COMP_CWORD - 1]} scelte
  case $prima in
    -T) scelte='BANCA CONSEGNA SOSPESO PRESUNTO EXTRA TEST' ;;
    BANCA) scelte='/CREDITI /DEBITI /PRESUNTI' ;;
    CONSEGNA) scelte='/PRESUNTI' ;;
    SOSPESO | PRESUNTO) scelte='/A /D' ;;
    EXTRA) scelte='/A' ;;
    -SC) scelte='SCADUTO DASCADERE' ;;
    lumoscad) scelte='- -T -h --registra-host --prova-host --blocchi --libera-blocco --prova-base-dati --in-sospeso
      --riallinea --archivia --aiuto --versione' ;;
    --blocchi | --libera-blocco | --prova-host | --registra-host | -H | -h) return ;;
    *)
      scelte='-D -H -SC -B -C -P -CODINT -M -S -A -N -E -TIPOMOVIMENTI -SERIEESCLUSE -DATA -DEMO
        -DB2SOURCE -DB2USER -DB2PASS -DB2SCHEMA'
      case ${COMP_WORDS[1]} in
        --libera-blocco) [ "$COMP_CWORD" -eq 3 ] && scelte='CREDITI DEBITI PRESUNTI' || scelte=--si ;;
        --riallinea) scelte="$scelte --si" ;;
      esac
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$scelte" -- "$parola")
}
complete -F _lumoscad lumoscad
