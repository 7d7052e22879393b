' SSInsTrigLib.bas - helper library of the insert trigger, platform 1
' (Transact-SQL).
'
' Loaded by the host before SSInsTrig.bas. A relation (rel) has .PairCount,
' .ParentColumn(j) and .ChildColumn(j), as described in SSInsTrig.bas.

Option Explicit

' [owner].[name], or [name] when the owner is empty.
Function QualifiedName(owner As String, name As String) As String
    If owner = "" Then
        QualifiedName = "[" & name & "]"
    Else
        QualifiedName = "[" & owner & "].[" & name & "]"
    End If
End Function

' "p.[k1] = i.[f1] AND ...": the parent row a new child row names.
Function PairCondition(rel As Object, parentAlias As String, childAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & parentAlias & ".[" & rel.ParentColumn(j) & "] = " _
                    & childAlias & ".[" & rel.ChildColumn(j) & "]"
    Next j
    PairCondition = text
End Function

' "i.[f1] IS NOT NULL AND ...": a new row that refers to a parent at all. A
' foreign key with a null column refers to nothing and is not checked.
Function ForeignKeySet(rel As Object, childAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & childAlias & ".[" & rel.ChildColumn(j) & "] IS NOT NULL"
    Next j
    ForeignKeySet = text
End Function

' Emits the statement that ends the trigger with an error and rolls back.
Sub EmitError(indent As String, message As String)
    Emit indent & "THROW 50003, N'" & Replace(message, "'", "''") & "', 1;"
End Sub
