zet-hello: zet-hello (powitanie z przykładów zet)
zet-hello:
zet-hello: Mały przykładowy pakiet: program zet-hello wypisuje powitanie,
zet-hello: a jego skrypt instalacyjny dowiązuje do niego drugą nazwę zet-hi.
zet-hello: Pokazuje, co zawiera pakiet i jak zet go instaluje, uaktualnia
zet-hello: i usuwa.
