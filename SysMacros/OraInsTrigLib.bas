' OraInsTrigLib.bas - helper library of the insert trigger, platform 2
' (PL/SQL).
'
' Loaded by the host before OraInsTrig.bas. A relation (rel) has .PairCount,
' .ParentColumn(j) and .ChildColumn(j), as described in OraInsTrig.bas.

Option Explicit

' owner.name, or name when the owner is empty.
Function QualifiedName(owner As String, name As String) As String
    If owner = "" Then QualifiedName = name Else QualifiedName = owner & "." & name
End Function

' "p.k1 = :NEW.f1 AND ...": the parent row the new row names.
Function ParentRowOf(rel As Object, parentAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & parentAlias & "." & rel.ParentColumn(j) & " = :NEW." & rel.ChildColumn(j)
    Next j
    ParentRowOf = text
End Function

' ":NEW.f1 IS NOT NULL AND ...": the new row refers to a parent at all.
Function ForeignKeySet(rel As Object) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & ":NEW." & rel.ChildColumn(j) & " IS NOT NULL"
    Next j
    ForeignKeySet = text
End Function

' Emits the call that ends the trigger with an error.
Sub EmitError(indent As String, message As String)
    Emit indent & "RAISE_APPLICATION_ERROR(-20003, '" & Replace(message, "'", "''") & "');"
End Sub
