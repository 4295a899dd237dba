select d.*, :pCont as cont -- :nu_e_parametru
from view_contab_det d
where d.data between :pDataInc and :pDataSf and (d.cont_d like :pCont || '%' or d.cont_c like :PCONT || '%')
  and d.explicatie <> 'a :b' and d.x::text = e'\\' || $1 and "col:umn" = $tag$ :nu $tag$
/* bloc /* imbricat :nu */ */ order by d.data::date
