' OraDelTrigLib.bas - helper library of the delete trigger, platform 2
' (PL/SQL).
'
' Loaded by the host before OraDelTrig.bas. A relation (rel) has .PairCount,
' .ParentColumn(j) and .ChildColumn(j), as described in OraDelTrig.bas.

Option Explicit

' owner.name, or name when the owner is empty.
Function QualifiedName(owner As String, name As String) As String
    If owner = "" Then QualifiedName = name Else QualifiedName = owner & "." & name
End Function

' "c.f1 = :OLD.k1 AND ...": the child rows of the deleted parent row.
Function ChildRowsOf(rel As Object, childAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & childAlias & "." & rel.ChildColumn(j) & " = :OLD." & rel.ParentColumn(j)
    Next j
    ChildRowsOf = text
End Function

' "f1 = NULL, f2 = NULL" over the child's foreign-key columns.
Function SetChildColumnsNull(rel As Object) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & ", "
        text = text & rel.ChildColumn(j) & " = NULL"
    Next j
    SetChildColumnsNull = text
End Function

' Emits the call that ends the trigger with an error.
Sub EmitError(indent As String, message As String)
    Emit indent & "RAISE_APPLICATION_ERROR(-20002, '" & Replace(message, "'", "''") & "');"
End Sub
