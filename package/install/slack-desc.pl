zet: zet (menedżer pakietów .tgz)
zet:
zet: zet instaluje, usuwa i uaktualnia oprogramowanie w pakietach .tgz
zet: i prowadzi ich bazę danych w plikach tekstowych pod /var/log.
zet: Jeden program odpowiada na nazwy zet, installzet, removezet
zet: i upgradezet; makezet obok niego tworzy pakiety z drzew katalogów,
zet: queryzet odpowiada na pytania o zainstalowane pakiety,
zet: a getzet pobiera pakiety z podpisanych repozytoriów.
zet: Mówi po angielsku, po polsku i po niemiecku.
