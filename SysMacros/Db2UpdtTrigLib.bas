' Db2UpdtTrigLib.bas - helper library of the update trigger, platform 3
' (SQL PL).
'
' The host loads this library before it runs Db2UpdtTrig.bas. Its functions
' only build text. A relation (rel) has .PairCount, .ParentColumn(j) and
' .ChildColumn(j), as described in Db2UpdtTrig.bas. The trigger names the old
' row O and the new row N.

Option Explicit

' owner.name, or name when the owner is empty.
Function QualifiedName(owner As String, name As String) As String
    If owner = "" Then QualifiedName = name Else QualifiedName = owner & "." & name
End Function

' "c.f1 = O.k1 AND ...": the child rows of the parent row as it was (row "O")
' or is now ("N").
Function ChildRowsOf(rel As Object, row As String, childAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & childAlias & "." & rel.ChildColumn(j) & " = " & row & "." & rel.ParentColumn(j)
    Next j
    ChildRowsOf = text
End Function

' "p.k1 = N.f1 AND ...": the parent row the child row now names.
Function ParentRowOf(rel As Object, parentAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & parentAlias & "." & rel.ParentColumn(j) & " = N." & rel.ChildColumn(j)
    Next j
    ParentRowOf = text
End Function

' "O.k1 IS DISTINCT FROM N.k1 OR ...": the update changed a column of the
' relation, on the parent side (parentSide True) or on the child side.
Function Changed(rel As Object, parentSide As Boolean) As String
    Dim j As Integer, text As String, column As String
    For j = 1 To rel.PairCount
        If parentSide Then column = rel.ParentColumn(j) Else column = rel.ChildColumn(j)
        If j > 1 Then text = text & " OR "
        text = text & "O." & column & " IS DISTINCT FROM N." & column
    Next j
    Changed = text
End Function

' "N.f1 IS NOT NULL AND ...": the child row refers to a parent at all.
Function ForeignKeySet(rel As Object) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & "N." & rel.ChildColumn(j) & " IS NOT NULL"
    Next j
    ForeignKeySet = text
End Function

' Emits the statement that ends the trigger with an error; the triggering
' statement is rolled back.
Sub EmitError(indent As String, message As String)
    Emit indent & "SIGNAL SQLSTATE '75001' SET MESSAGE_TEXT = '" _
         & Replace(Left(message, 70), "'", "''") & "';"
End Sub
