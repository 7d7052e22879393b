' OraUpdtTrigLib.bas - helper library of the update trigger, platform 2
' (PL/SQL).
'
' The host loads this library before it runs OraUpdtTrig.bas. Its functions
' only build text. A relation (rel) has .PairCount, .ParentColumn(j) and
' .ChildColumn(j), as described in OraUpdtTrig.bas.

Option Explicit

' owner.name, or name when the owner is empty.
Function QualifiedName(owner As String, name As String) As String
    If owner = "" Then QualifiedName = name Else QualifiedName = owner & "." & name
End Function

' "c.f1 = :OLD.k1 AND c.f2 = :OLD.k2": the child rows of the parent row as it
' was (record "OLD") or is now ("NEW").
Function ChildRowsOf(rel As Object, record As String, childAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & childAlias & "." & rel.ChildColumn(j) & " = :" & record & "." _
                    & rel.ParentColumn(j)
    Next j
    ChildRowsOf = text
End Function

' "p.k1 = :NEW.f1 AND ...": the parent row the child row now names.
Function ParentRowOf(rel As Object, parentAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & parentAlias & "." & rel.ParentColumn(j) & " = :NEW." & rel.ChildColumn(j)
    Next j
    ParentRowOf = text
End Function

' "UPDATING('K1') OR UPDATING('K2')": the statement sets a column of the
' relation, on the parent side (parentSide True) or on the child side.
Function Updating(rel As Object, parentSide As Boolean) As String
    Dim j As Integer, text As String, column As String
    For j = 1 To rel.PairCount
        If parentSide Then column = rel.ParentColumn(j) Else column = rel.ChildColumn(j)
        If j > 1 Then text = text & " OR "
        text = text & "UPDATING('" & UCase(column) & "')"
    Next j
    Updating = text
End Function

' ":NEW.f1 IS NOT NULL AND ...": the child row refers to a parent at all.
Function ForeignKeySet(rel As Object) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & ":NEW." & rel.ChildColumn(j) & " IS NOT NULL"
    Next j
    ForeignKeySet = text
End Function

' Emits the call that ends the trigger with an error; the statement that fired
' it is rolled back.
Sub EmitError(indent As String, message As String)
    Emit indent & "RAISE_APPLICATION_ERROR(-20001, '" & Replace(message, "'", "''") & "');"
End Sub
