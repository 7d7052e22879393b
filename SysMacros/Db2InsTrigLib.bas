' Db2InsTrigLib.bas - helper library of the insert trigger, platform 3
' (SQL PL).
'
' Loaded by the host before Db2InsTrig.bas. A relation (rel) has .PairCount,
' .ParentColumn(j) and .ChildColumn(j), as described in Db2InsTrig.bas. The
' trigger names the new row N.

Option Explicit

' owner.name, or name when the owner is empty.
Function QualifiedName(owner As String, name As String) As String
    If owner = "" Then QualifiedName = name Else QualifiedName = owner & "." & name
End Function

' "p.k1 = N.f1 AND ...": the parent row the new row names.
Function ParentRowOf(rel As Object, parentAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & parentAlias & "." & rel.ParentColumn(j) & " = N." & rel.ChildColumn(j)
    Next j
    ParentRowOf = text
End Function

' "N.f1 IS NOT NULL AND ...": the new row refers to a parent at all.
Function ForeignKeySet(rel As Object) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & "N." & rel.ChildColumn(j) & " IS NOT NULL"
    Next j
    ForeignKeySet = text
End Function

' Emits the statement that ends the trigger with an error. Message texts are
' kept to 70 characters.
Sub EmitError(indent As String, message As String)
    Emit indent & "SIGNAL SQLSTATE '75003' SET MESSAGE_TEXT = '" _
         & Replace(Left(message, 70), "'", "''") & "';"
End Sub
